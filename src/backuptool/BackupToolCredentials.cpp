#include "backuptool/BackupToolCredentials.hpp"

#include <utility>

#include "credential/BoundedCredentialRead.hpp"
#include "envelope/BackupPassphrasePolicy.hpp"
#include "platform/ConstantTime.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::backuptool {

namespace BackupToolCredentials {
namespace {

using Factor = envelope::PortableKeyFactorV1;
using Input = credential::CredentialInput;

// read is the bounded read both tools share, its two outcomes named in this tool's terms.
std::expected<Bytes, BackupToolError> read(BackupToolCredentialReading& reader, Factor factor, Input input) {
  auto credential = credential::BoundedCredentialRead::read(reader, factor, input);
  if (credential) return std::move(*credential);
  return std::unexpected(credential.error() == credential::BoundedCredentialReadError::unavailable
                             ? BackupToolError::credentialUnavailable
                             : BackupToolError::invalidCredential);
}

std::expected<void, BackupToolError> confirm(BackupToolCredentialReading& reader, ByteView passphrase) {
  auto repeated = reader.readRepeatedPassphrase(credential::BoundedCredentialRead::maximumByteCount);
  if (!repeated) return std::unexpected(BackupToolError::credentialUnavailable);
  ScopeGuard wipeRepeated{[&] { platform::SecureMemory::wipe(*repeated); }};
  if (!platform::ConstantTime::equal(passphrase, *repeated))
    return std::unexpected(BackupToolError::passphraseMismatch);
  return {};
}

}  // namespace

std::expected<Bytes, BackupToolError> readNewBackupPassphrase(BackupToolCredentialReading& reader, Input input) {
  auto passphrase = read(reader, Factor::backupPassphrase, input);
  if (!passphrase) return std::unexpected(passphrase.error());
  ScopeGuard wipeOnFailure{[&] { platform::SecureMemory::wipe(*passphrase); }};
  if (!envelope::BackupPassphrasePolicy::accepts(*passphrase))
    return std::unexpected(BackupToolError::passphraseTooWeak);
  if (input == Input::hiddenTerminal) {
    if (auto confirmed = confirm(reader, *passphrase); !confirmed) return std::unexpected(confirmed.error());
  }
  wipeOnFailure.dismiss();
  return std::move(*passphrase);
}

std::expected<Bytes, BackupToolError> readBackupPassphrase(BackupToolCredentialReading& reader, Input input) {
  return read(reader, Factor::backupPassphrase, input);
}

std::expected<writer::BackupRecoveryKey, BackupToolError> readRecoveryKey(BackupToolCredentialReading& reader,
                                                                          Input input) {
  auto words = read(reader, Factor::recoveryKey, input);
  if (!words) return std::unexpected(words.error());
  ScopeGuard wipeWords{[&] { platform::SecureMemory::wipe(*words); }};
  auto key = writer::BackupRecoveryKey::fromPhrase(ByteText::text(*words));
  if (!key) return std::unexpected(BackupToolError::invalidCredential);
  return std::move(*key);
}

}  // namespace BackupToolCredentials

}  // namespace galdrine::backuptool
