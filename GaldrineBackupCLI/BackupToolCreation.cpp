#include "GaldrineBackupCLI/BackupToolCreation.hpp"

#include <optional>
#include <system_error>
#include <utility>

#include "GaldrineBackupCLI/BackupPackagePublication.hpp"
#include "GaldrineBackupCLI/BackupToolCredentials.hpp"
#include "GaldrineBackupCLI/BackupToolReport.hpp"
#include "GaldrineBackupCLI/BackupToolSnapshot.hpp"
#include "GaldrineBackupCLI/BackupToolWriterFailure.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPackageWriterV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupRecoveryKeyV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

namespace BackupToolCreation {
namespace {

namespace fs = std::filesystem;

// NewCredentials are the secrets of a new package, each wiped when this goes away.
struct NewCredentials {
  std::optional<Bytes> passphrase;
  std::optional<GaldrineBackupRecoveryKeyV1> recoveryKey;

  NewCredentials() = default;
  NewCredentials(const NewCredentials&) = delete;
  NewCredentials& operator=(const NewCredentials&) = delete;
  ~NewCredentials() {
    if (passphrase) GaldrineSecureMemory::wipe(*passphrase);
  }

  [[nodiscard]] GaldrineBackupPackageCredentialsV1 forWriter() const {
    GaldrineBackupPackageCredentialsV1 credentials;
    if (passphrase) credentials.backupPassphrase = ByteView(*passphrase);
    if (recoveryKey) credentials.recoveryKey = recoveryKey->key();
    return credentials;
  }
};

std::expected<void, BackupToolError> obtain(const BackupToolCommand::Create& command, BackupToolCredentialReading& reader,
                                            const GaldrineBackupWriterSettingsV1& settings, NewCredentials& credentials) {
  if (command.backupPassphrase) {
    auto passphrase = BackupToolCredentials::readNewBackupPassphrase(reader, command.credentialInput);
    if (!passphrase) return std::unexpected(passphrase.error());
    credentials.passphrase = std::move(*passphrase);
  }
  if (command.newRecoveryKey) {
    auto key = GaldrineBackupRecoveryKeyV1::generate(settings.sources);
    if (!key) return std::unexpected(BackupToolError::operationFailed);
    credentials.recoveryKey.emplace(std::move(*key));
  }
  return {};
}

// buildAndPublish writes the whole package under `stagingURL` and moves it to its path; the
// staged package is removed on every failure after it came to exist.
std::expected<BackupToolCounts, BackupToolError> buildAndPublish(const fs::path& stagingURL, const fs::path& packageURL,
                                                                 const BackupSource& source,
                                                                 const NewCredentials& credentials,
                                                                 const GaldrineBackupWriterSettingsV1& settings) {
  auto writer = GaldrineBackupPackageWriterV1::create(stagingURL, credentials.forWriter(), settings);
  // A failed create leaves nothing at the staging name, and anything found there is not ours.
  if (!writer) return std::unexpected(backupToolError(writer.error(), BackupToolStage::creating));
  GaldrineScopeGuard removeStaging{[&] {
    std::error_code ignored;  // best effort: the run has failed already
    fs::remove_all(stagingURL, ignored);
  }};
  const auto counts = BackupToolSnapshot::write(*writer, source);
  if (!counts) return std::unexpected(counts.error());
  if (auto published = BackupPackagePublication::publish(stagingURL, packageURL); !published) {
    return std::unexpected(published.error());
  }
  removeStaging.dismiss();
  return *counts;
}

}  // namespace

std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Create& command, BackupToolCredentialReading& reader,
                                          const GaldrineBackupWriterSettingsV1& settings) {
  if (auto location = BackupPackagePublication::checkNewPackageLocation(command.packageURL); !location) {
    return std::unexpected(location.error());
  }
  const auto source = BackupToolSnapshot::scannedSource(command.sourceURL);
  if (!source) return std::unexpected(source.error());
  NewCredentials credentials;
  if (auto obtained = obtain(command, reader, settings, credentials); !obtained) return std::unexpected(obtained.error());
  const auto stagingURL = BackupPackagePublication::stagingURL(command.packageURL);
  if (!stagingURL) return std::unexpected(stagingURL.error());
  const auto counts = buildAndPublish(*stagingURL, command.packageURL, *source, credentials, settings);
  if (!counts) return std::unexpected(counts.error());
  const std::string summary = BackupToolReport::createdLine(*counts);
  if (!credentials.recoveryKey) return GaldrineByteText::bytes(summary);
  return BackupToolReport::withRecoveryKey(credentials.recoveryKey->phrase(), summary);
}

}  // namespace BackupToolCreation
