#include "recovery/export/RecoveryExporter.hpp"

#include <optional>

#include "platform/FilePath.hpp"
#include "recovery/export/ExportWriting.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryExporterError;
using Result = RecoveryExportResult;
using Factor = envelope::PortableKeyFactorV1;

// isStandardDestination: `destinationPath` is absolute and already in its standard form.
[[nodiscard]] bool isStandardDestination(const fs::path& destinationPath) {
  return destinationPath.is_absolute() &&
         platform::FilePath::standardized(destinationPath).native() == destinationPath.native();
}

[[nodiscard]] std::expected<Result, Error> exportWith(const fs::path& packagePath, const ExportCredential& credential,
                                                      ByteView selectedCommitIdentifier,
                                                      const fs::path& destinationPath,
                                                      std::optional<RecoveryExportFaultPoint> faultPoint) {
  if (!isStandardDestination(destinationPath)) return std::unexpected(Error::destinationUnavailable);
  const auto session = RestoreSession::restoreSession(packagePath, credential, selectedCommitIdentifier);
  if (!session) return std::unexpected(session.error());
  return writeExport(destinationPath, **session, faultPoint);
}

}  // namespace

std::expected<Result, Error> exportWithBackupPassphrase(const fs::path& packagePath, ByteView passphrase,
                                                        ByteView selectedCommitIdentifier,
                                                        const fs::path& destinationPath) {
  return exportWith(packagePath, {Factor::backupPassphrase, passphrase}, selectedCommitIdentifier, destinationPath,
                    std::nullopt);
}

std::expected<Result, Error> exportWithRecoveryKey(const fs::path& packagePath, ByteView recoveryKey,
                                                   ByteView selectedCommitIdentifier, const fs::path& destinationPath) {
  return exportWith(packagePath, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier, destinationPath,
                    std::nullopt);
}

std::expected<Result, Error> exportWithRecoveryKey(const fs::path& packagePath, ByteView recoveryKey,
                                                   ByteView selectedCommitIdentifier, const fs::path& destinationPath,
                                                   RecoveryExportFaultPoint faultPoint) {
  return exportWith(packagePath, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier, destinationPath,
                    faultPoint);
}

std::expected<std::shared_ptr<const RestoreSession>, Error> restoreSessionWithBackupPassphrase(
    const fs::path& packagePath, ByteView passphrase, ByteView selectedCommitIdentifier) {
  return RestoreSession::restoreSession(packagePath, {Factor::backupPassphrase, passphrase}, selectedCommitIdentifier);
}

std::expected<std::shared_ptr<const RestoreSession>, Error> restoreSessionWithRecoveryKey(
    const fs::path& packagePath, ByteView recoveryKey, ByteView selectedCommitIdentifier) {
  return RestoreSession::restoreSession(packagePath, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier);
}

}  // namespace galdrine::recovery
