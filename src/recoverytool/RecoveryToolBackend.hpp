#pragma once
// RecoveryToolBackend is the driver's only way to the engine. A backend maps the engine's
// failures to RecoveryToolError itself, so the driver never sees an engine error. It is
// handed the credential bytes for the length of one call and keeps no copy.

#include <expected>
#include <filesystem>

#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/export/RecoveryExportResult.hpp"
#include "recoverytool/RecoveryToolError.hpp"
#include "recoverytool/RecoveryToolInspection.hpp"

namespace galdrine::recoverytool {

class RecoveryToolBackend {
 public:
  virtual ~RecoveryToolBackend() = default;

  // inspect unlocks the package with the credential and gives its authenticated inspection.
  [[nodiscard]] virtual std::expected<RecoveryToolInspection, RecoveryToolError> inspect(
      const std::filesystem::path& packagePath, envelope::PortableKeyFactorV1 factor, ByteView credential) = 0;

  // exportSnapshot unlocks the package again and writes the snapshot of the selected commit
  // to a new directory at destinationPath. On failure nothing is published there.
  [[nodiscard]] virtual std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& packagePath, envelope::PortableKeyFactorV1 factor, ByteView credential,
      ByteView selectedCommitIdentifier, const std::filesystem::path& destinationPath) = 0;
};

}  // namespace galdrine::recoverytool
