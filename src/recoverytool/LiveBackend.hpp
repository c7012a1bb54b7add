#pragma once
// LiveBackend is the backend that reaches the real engine: it turns the credential bytes the
// tool read into what the engine takes (a passphrase byte for byte, typed recovery key words
// into their 32 bytes), converts the engine's inspection into the tool's own records, and
// maps every engine failure to one RecoveryToolError.
//
// Every buffer made from the credential (the passphrase's copy, the recovery key's bytes) is
// wiped before the call returns, on success and on failure alike. The credential itself stays
// the driver's.

#include <expected>
#include <filesystem>

#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recoverytool/RecoveryToolBackend.hpp"
#include "recoverytool/RecoveryToolBackendError.hpp"

namespace galdrine::recoverytool {

class LiveBackend final : public RecoveryToolBackend {
 public:
  // inspect unlocks and inspects with the engine's default limits.
  [[nodiscard]] std::expected<RecoveryToolInspection, RecoveryToolError> inspect(
      const std::filesystem::path& packagePath, envelope::PortableKeyFactorV1 factor, ByteView credential) override;

  // exportSnapshot unlocks the package a second time and exports the selected commit.
  [[nodiscard]] std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& packagePath, envelope::PortableKeyFactorV1 factor, ByteView credential,
      ByteView selectedCommitIdentifier, const std::filesystem::path& destinationPath) override;

  // recoveryKey reads credential bytes as typed recovery key words and gives the 32 bytes they
  // stand for, which the caller owns and wipes. Bytes that are not UTF-8, and words the
  // mnemonic refuses for any reason, are invalidCredential.
  [[nodiscard]] static std::expected<Bytes, RecoveryToolBackendError> recoveryKey(ByteView credential);

  // toolInspection is the engine's inspection in the tool's records: the library domain, the
  // envelope set's digest and every snapshot identifier stay behind, since the tool has no use
  // for them.
  [[nodiscard]] static RecoveryToolInspection toolInspection(const recovery::RecoveryPackageInspection& inspection);
};

}  // namespace galdrine::recoverytool
