#include "GaldrineBackupCLI/BackupToolCredentials.hpp"

#include <utility>

#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrinePlatformConstantTime.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphrasePolicyV1.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolV1.hpp"

namespace BackupToolCredentials {
namespace {

using Factor = GaldrineRecoveryToolCredentialFactorV1;
using Input = GaldrineRecoveryToolCredentialInputV1;

// read is the recovery tool's own reading, its two outcomes named in this tool's terms.
std::expected<Bytes, BackupToolError> read(BackupToolCredentialReading& reader, Factor factor, Input input) {
  auto credential = GaldrineRecoveryToolV1::readCredential(reader, RecoveryRequest{{}, factor, input});
  if (credential) return std::move(*credential);
  return std::unexpected(credential.error() == RecoveryToolError::credentialUnavailable ? BackupToolError::credentialUnavailable
                                                                                       : BackupToolError::invalidCredential);
}

std::expected<void, BackupToolError> confirm(BackupToolCredentialReading& reader, ByteView passphrase) {
  auto repeated = reader.readRepeatedPassphrase(GaldrineRecoveryToolV1::maximumCredentialByteCount);
  if (!repeated) return std::unexpected(BackupToolError::credentialUnavailable);
  GaldrineScopeGuard wipeRepeated{[&] { GaldrineSecureMemory::wipe(*repeated); }};
  if (!GaldrinePlatformConstantTime::equal(passphrase, *repeated)) return std::unexpected(BackupToolError::passphraseMismatch);
  return {};
}

}  // namespace

std::expected<Bytes, BackupToolError> readNewBackupPassphrase(BackupToolCredentialReading& reader, Input input) {
  auto passphrase = read(reader, Factor::backupPassphrase, input);
  if (!passphrase) return std::unexpected(passphrase.error());
  GaldrineScopeGuard wipeOnFailure{[&] { GaldrineSecureMemory::wipe(*passphrase); }};
  if (!GaldrineBackupPassphrasePolicyV1::accepts(*passphrase)) return std::unexpected(BackupToolError::passphraseTooWeak);
  if (input == Input::hiddenTerminal) {
    if (auto confirmed = confirm(reader, *passphrase); !confirmed) return std::unexpected(confirmed.error());
  }
  wipeOnFailure.dismiss();
  return std::move(*passphrase);
}

std::expected<Bytes, BackupToolError> readBackupPassphrase(BackupToolCredentialReading& reader, Input input) {
  return read(reader, Factor::backupPassphrase, input);
}

std::expected<GaldrineBackupRecoveryKeyV1, BackupToolError> readRecoveryKey(BackupToolCredentialReading& reader,
                                                                           Input input) {
  auto words = read(reader, Factor::recoveryKey, input);
  if (!words) return std::unexpected(words.error());
  GaldrineScopeGuard wipeWords{[&] { GaldrineSecureMemory::wipe(*words); }};
  auto key = GaldrineBackupRecoveryKeyV1::fromPhrase(GaldrineByteText::text(*words));
  if (!key) return std::unexpected(BackupToolError::invalidCredential);
  return std::move(*key);
}

}  // namespace BackupToolCredentials
