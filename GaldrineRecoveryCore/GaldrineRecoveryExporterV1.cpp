#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1.hpp"

#include <optional>

#include "GaldrinePlatform/GaldrineFileURL.hpp"
#include "GaldrineRecoveryCore/ExportWriting.hpp"

namespace GaldrineRecoveryExporterV1 {

namespace {

namespace fs = std::filesystem;
using Error = GaldrineRecoveryExporterV1Error;
using Result = GaldrineRecoveryExportResultV1;
using Factor = GaldrineRecoveryPortableFactorV1;

[[nodiscard]] std::expected<Result, Error> exportWith(const fs::path& packageURL, const ExportCredential& credential,
                                                      ByteView selectedCommitIdentifier, const fs::path& destinationURL,
                                                      std::optional<GaldrineRecoveryExportFaultPointV1> faultPoint) {
  if (!isStandardDestination(destinationURL)) return std::unexpected(Error::destinationUnavailable);
  const auto session = RestoreSession::restoreSession(packageURL, credential, selectedCommitIdentifier);
  if (!session) return std::unexpected(session.error());
  return writeExport(destinationURL, **session, faultPoint);
}

}  // namespace

bool isStandardDestination(const fs::path& destinationURL) {
  return destinationURL.is_absolute() && GaldrineFileURL::standardized(destinationURL).native() == destinationURL.native();
}

std::expected<Result, Error> exportWithBackupPassphrase(const fs::path& packageURL, ByteView passphrase,
                                                        ByteView selectedCommitIdentifier, const fs::path& destinationURL) {
  return exportWith(packageURL, {Factor::backupPassphrase, passphrase}, selectedCommitIdentifier, destinationURL,
                    std::nullopt);
}

std::expected<Result, Error> exportWithRecoveryKey(const fs::path& packageURL, ByteView recoveryKey,
                                                   ByteView selectedCommitIdentifier, const fs::path& destinationURL) {
  return exportWith(packageURL, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier, destinationURL, std::nullopt);
}

std::expected<Result, Error> exportWithRecoveryKey(const fs::path& packageURL, ByteView recoveryKey,
                                                   ByteView selectedCommitIdentifier, const fs::path& destinationURL,
                                                   GaldrineRecoveryExportFaultPointV1 faultPoint) {
  return exportWith(packageURL, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier, destinationURL, faultPoint);
}

std::expected<std::shared_ptr<const RestoreSession>, Error> restoreSessionWithBackupPassphrase(
    const fs::path& packageURL, ByteView passphrase, ByteView selectedCommitIdentifier) {
  return RestoreSession::restoreSession(packageURL, {Factor::backupPassphrase, passphrase}, selectedCommitIdentifier);
}

std::expected<std::shared_ptr<const RestoreSession>, Error> restoreSessionWithRecoveryKey(const fs::path& packageURL,
                                                                                           ByteView recoveryKey,
                                                                                           ByteView selectedCommitIdentifier) {
  return RestoreSession::restoreSession(packageURL, {Factor::recoveryKey, recoveryKey}, selectedCommitIdentifier);
}

}  // namespace GaldrineRecoveryExporterV1
