#pragma once
// UnavailableBackend stands in for the engine in a build that has none: both operations fail
// with operationFailed, so inspect and export end in the generic failure, after the
// credential was read and wiped like on any other road, and print nothing they did not do.

#include "GaldrineRecoveryTool/RecoveryToolBackend.hpp"

class UnavailableBackend final : public RecoveryToolBackend {
 public:
  [[nodiscard]] std::expected<RecoveryToolInspection, RecoveryToolError> inspect(
      const std::filesystem::path& packageURL, GaldrineRecoveryToolCredentialFactorV1 factor, ByteView credential) override;

  [[nodiscard]] std::expected<GaldrineRecoveryExportResultV1, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& packageURL, GaldrineRecoveryToolCredentialFactorV1 factor, ByteView credential,
      ByteView selectedCommitIdentifier, const std::filesystem::path& destinationURL) override;
};
