#include "backuptool/BackupToolCreation.hpp"

#include <optional>
#include <system_error>
#include <utility>

#include "backuptool/BackupPackagePublication.hpp"
#include "backuptool/BackupToolCredentials.hpp"
#include "backuptool/BackupToolReport.hpp"
#include "backuptool/BackupToolSnapshot.hpp"
#include "backuptool/BackupToolWriterFailure.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "writer/BackupPackageWriter.hpp"
#include "writer/BackupRecoveryKey.hpp"

namespace galdrine::backuptool {

namespace BackupToolCreation {
namespace {

namespace fs = std::filesystem;

// NewCredentials are the secrets of a new package, each wiped when this goes away.
struct NewCredentials {
  std::optional<Bytes> passphrase;
  std::optional<writer::BackupRecoveryKey> recoveryKey;

  NewCredentials() = default;
  NewCredentials(const NewCredentials&) = delete;
  NewCredentials& operator=(const NewCredentials&) = delete;
  ~NewCredentials() {
    if (passphrase) platform::SecureMemory::wipe(*passphrase);
  }

  [[nodiscard]] writer::BackupPackageCredentials forWriter() const {
    writer::BackupPackageCredentials credentials;
    if (passphrase) credentials.backupPassphrase = ByteView(*passphrase);
    if (recoveryKey) credentials.recoveryKey = recoveryKey->key();
    return credentials;
  }
};

std::expected<void, BackupToolError> obtain(const BackupToolCommand::Create& command,
                                            BackupToolCredentialReading& reader, NewCredentials& credentials) {
  if (command.backupPassphrase) {
    auto passphrase = BackupToolCredentials::readNewBackupPassphrase(reader, command.credentialInput);
    if (!passphrase) return std::unexpected(passphrase.error());
    credentials.passphrase = std::move(*passphrase);
  }
  if (command.newRecoveryKey) {
    auto key = writer::BackupRecoveryKey::generate(writer::BackupWriterSources::system());
    if (!key) return std::unexpected(BackupToolError::operationFailed);
    credentials.recoveryKey.emplace(std::move(*key));
  }
  return {};
}

// buildAndPublish writes the whole package under `stagingPath` and moves it to its path; the
// staged package is removed on every failure after it came to exist.
std::expected<BackupToolCounts, BackupToolError> buildAndPublish(const fs::path& stagingPath,
                                                                 const fs::path& packagePath,
                                                                 const BackupSource& source,
                                                                 const NewCredentials& credentials) {
  auto writer = writer::BackupPackageWriter::create(stagingPath, credentials.forWriter());
  // A failed create leaves nothing at the staging name, and anything found there is not ours.
  if (!writer) return std::unexpected(backupToolError(writer.error(), BackupToolStage::creating));
  ScopeGuard removeStaging{[&] {
    std::error_code ignored;  // best effort: the run has failed already
    fs::remove_all(stagingPath, ignored);
  }};
  const auto counts = BackupToolSnapshot::write(*writer, source);
  if (!counts) return std::unexpected(counts.error());
  if (auto published = BackupPackagePublication::publish(stagingPath, packagePath); !published) {
    return std::unexpected(published.error());
  }
  removeStaging.dismiss();
  return *counts;
}

}  // namespace

std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Create& command,
                                          BackupToolCredentialReading& reader) {
  if (auto location = BackupPackagePublication::checkNewPackageLocation(command.packagePath); !location) {
    return std::unexpected(location.error());
  }
  const auto source = BackupToolSnapshot::scannedSource(command.sourcePath);
  if (!source) return std::unexpected(source.error());
  NewCredentials credentials;
  if (auto obtained = obtain(command, reader, credentials); !obtained) return std::unexpected(obtained.error());
  const auto stagingPath = BackupPackagePublication::stagingPath(command.packagePath);
  if (!stagingPath) return std::unexpected(stagingPath.error());
  const auto counts = buildAndPublish(*stagingPath, command.packagePath, *source, credentials);
  if (!counts) return std::unexpected(counts.error());
  const std::string summary = BackupToolReport::createdLine(*counts);
  if (!credentials.recoveryKey) return ByteText::bytes(summary);
  return BackupToolReport::withRecoveryKey(credentials.recoveryKey->phrase(), summary);
}

}  // namespace BackupToolCreation

}  // namespace galdrine::backuptool
