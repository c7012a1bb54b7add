#pragma once
// LiveBackend is the backend that reaches the real engine: it turns the credential bytes the
// tool read into what the engine takes (a passphrase byte for byte, typed recovery key words
// into their 32 bytes), converts the engine's inspection into the tool's own records (the
// library domain, the envelope set's digest and every snapshot identifier stay behind), and
// maps every engine failure to one RecoveryToolError.
//
// Every buffer made from the credential (the passphrase's copy, the recovery key's bytes) is
// wiped before the call returns, on success and on failure alike. The credential itself stays
// the driver's.

#include <cstdint>
#include <expected>
#include <filesystem>

#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"
#include "recoverytool/RecoveryToolBackend.hpp"
#include "recoverytool/RecoveryToolError.hpp"

namespace galdrine::recoverytool {

// RecoveryToolBackendError is the live backend's own refusal: credential bytes that are no
// usable recovery key (not UTF-8, or words the mnemonic does not accept).
enum class RecoveryToolBackendError : std::uint8_t {
  invalidCredential,
};

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

  // The live backend's one table from the engine's failures to what the user sees; no error's
  // own detail travels further. A failure the table does not know counts as an integrity
  // failure, so an unknown fault never looks like a mere mistake of the user.
  //
  // mapInspectionError: an error of the recovery key words, and the backend's own
  // invalidCredential, are invalidCredential; each inspector case keeps its name.
  [[nodiscard]] static RecoveryToolError mapInspectionError(const keys::RecoveryKeyMnemonicV1Error& error);
  [[nodiscard]] static RecoveryToolError mapInspectionError(recovery::RecoveryPackageInspectorError error);
  [[nodiscard]] static RecoveryToolError mapInspectionError(RecoveryToolBackendError error);

  // mapExportError: each exporter case keeps its name, snapshotNotFound being the user's
  // snapshotSelectionNotFound. The export has no packageUnavailable.
  [[nodiscard]] static RecoveryToolError mapExportError(recovery::RecoveryExporterError error);
};

}  // namespace galdrine::recoverytool
