#include "GaldrineBackupCLI/BackupToolAddition.hpp"

#include <utility>

#include "GaldrineBackupCLI/BackupToolCredentials.hpp"
#include "GaldrineBackupCLI/BackupToolReport.hpp"
#include "GaldrineBackupCLI/BackupToolSnapshot.hpp"
#include "GaldrineBackupCLI/BackupToolWriterFailure.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPackageWriterV1.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

namespace BackupToolAddition {
namespace {

using Writer = GaldrineBackupPackageWriterV1;
using WriterResult = std::expected<Writer, BackupToolError>;

WriterResult opened(std::expected<Writer, GaldrineBackupWriterV1Failure> writer) {
  if (!writer) return std::unexpected(backupToolError(writer.error(), BackupToolStage::opening));
  return std::move(*writer);
}

WriterResult openWithPassphrase(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader,
                                const GaldrineBackupWriterSettingsV1& settings) {
  auto passphrase = BackupToolCredentials::readBackupPassphrase(reader, command.credentialInput);
  if (!passphrase) return std::unexpected(passphrase.error());
  GaldrineScopeGuard wipePassphrase{[&] { GaldrineSecureMemory::wipe(*passphrase); }};
  return opened(Writer::openWithBackupPassphrase(command.packageURL, *passphrase, settings));
}

WriterResult openWithRecoveryKey(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader,
                                 const GaldrineBackupWriterSettingsV1& settings) {
  const auto key = BackupToolCredentials::readRecoveryKey(reader, command.credentialInput);
  if (!key) return std::unexpected(key.error());
  return opened(Writer::openWithRecoveryKey(command.packageURL, key->key(), settings));
}

}  // namespace

std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader,
                                          const GaldrineBackupWriterSettingsV1& settings) {
  // A path that is no package is refused before anyone is asked for a credential.
  if (!GaldrineBackupPackageV1::open(command.packageURL)) return std::unexpected(BackupToolError::invalidPackage);
  const auto source = BackupToolSnapshot::scannedSource(command.sourceURL);
  if (!source) return std::unexpected(source.error());
  auto writer = command.factor == GaldrineRecoveryToolCredentialFactorV1::backupPassphrase
                    ? openWithPassphrase(command, reader, settings)
                    : openWithRecoveryKey(command, reader, settings);
  if (!writer) return std::unexpected(writer.error());
  const auto counts = BackupToolSnapshot::write(*writer, *source);
  if (!counts) return std::unexpected(counts.error());
  return GaldrineByteText::bytes(BackupToolReport::addedLine(*counts));
}

}  // namespace BackupToolAddition
