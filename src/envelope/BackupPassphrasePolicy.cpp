#include "envelope/BackupPassphrasePolicy.hpp"

#include "kdf/PassphraseCreationPolicy.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::envelope {

namespace BackupPassphrasePolicy {

bool accepts(ByteView passphrase) {
  if (!platform::UTF8::isValid(passphrase)) return false;
  return kdf::PassphraseCreationPolicy::accepts(ByteText::text(passphrase), minimumCharacterCount, minimumWordCount);
}

}  // namespace BackupPassphrasePolicy

}  // namespace galdrine::envelope
