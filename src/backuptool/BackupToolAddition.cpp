#include "backuptool/BackupToolAddition.hpp"

#include <utility>

#include "backuptool/BackupToolCredentials.hpp"
#include "backuptool/BackupToolReport.hpp"
#include "backuptool/BackupToolSnapshot.hpp"
#include "backuptool/BackupToolWriterFailure.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "writer/BackupPackageWriter.hpp"

namespace galdrine::backuptool {

namespace BackupToolAddition {
namespace {

using Writer = writer::BackupPackageWriter;
using WriterResult = std::expected<Writer, BackupToolError>;

WriterResult opened(std::expected<Writer, writer::BackupWriterFailure> writer) {
  if (!writer) return std::unexpected(backupToolError(writer.error(), BackupToolStage::opening));
  return std::move(*writer);
}

WriterResult openWithPassphrase(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader) {
  auto passphrase = BackupToolCredentials::readBackupPassphrase(reader, command.credentialInput);
  if (!passphrase) return std::unexpected(passphrase.error());
  ScopeGuard wipePassphrase{[&] { platform::SecureMemory::wipe(*passphrase); }};
  return opened(Writer::openWithBackupPassphrase(command.packagePath, *passphrase));
}

WriterResult openWithRecoveryKey(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader) {
  const auto key = BackupToolCredentials::readRecoveryKey(reader, command.credentialInput);
  if (!key) return std::unexpected(key.error());
  return opened(Writer::openWithRecoveryKey(command.packagePath, key->key()));
}

}  // namespace

std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Add& command, BackupToolCredentialReading& reader) {
  // A path that is no package is refused before anyone is asked for a credential.
  if (!format::BackupPackageV1::open(command.packagePath)) return std::unexpected(BackupToolError::invalidPackage);
  const auto source = BackupToolSnapshot::scannedSource(command.sourcePath);
  if (!source) return std::unexpected(source.error());
  auto writer = command.factor == envelope::PortableKeyFactorV1::backupPassphrase
                    ? openWithPassphrase(command, reader)
                    : openWithRecoveryKey(command, reader);
  if (!writer) return std::unexpected(writer.error());
  const auto counts = BackupToolSnapshot::write(*writer, *source);
  if (!counts) return std::unexpected(counts.error());
  return ByteText::bytes(BackupToolReport::addedLine(*counts));
}

}  // namespace BackupToolAddition

}  // namespace galdrine::backuptool
