#include "writer/BackupRecoveryKey.hpp"

#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::writer {

BackupRecoveryKey::~BackupRecoveryKey() {
  platform::SecureMemory::wipe(key_);
  platform::SecureMemory::wipe(phrase_);
}

std::expected<BackupRecoveryKey, BackupWriterFailure> BackupRecoveryKey::generate(const BackupWriterSources& sources) {
  auto key = sources.key();
  if (!key) return backupWriterFailure(key.error());
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*key); }};
  auto phrase = keys::RecoveryKeyMnemonicV1::phrase(*key);
  if (!phrase) return backupWriterFailure(phrase.error());
  wipeKey.dismiss();
  return BackupRecoveryKey(std::move(*key), std::move(*phrase));
}

std::expected<BackupRecoveryKey, BackupWriterFailure> BackupRecoveryKey::fromPhrase(std::string_view phrase) {
  auto key = keys::RecoveryKeyMnemonicV1::entropy(phrase);
  if (!key) return backupWriterFailure(key.error());
  return BackupRecoveryKey(std::move(*key), std::string(phrase));
}

}  // namespace galdrine::writer
