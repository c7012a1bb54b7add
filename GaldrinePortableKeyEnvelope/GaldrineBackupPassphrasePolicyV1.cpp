#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphrasePolicyV1.hpp"

#include "GaldrineCore/GaldrinePassphraseCreationPolicy.hpp"
#include "GaldrinePlatform/GaldrineUTF8.hpp"

namespace GaldrineBackupPassphrasePolicyV1 {

bool accepts(ByteView passphrase) {
  if (!GaldrineUTF8::isValid(passphrase)) return false;
  return GaldrinePassphraseCreationPolicy::accepts(GaldrineByteText::text(passphrase), minimumCharacterCount,
                                                   minimumWordCount);
}

}  // namespace GaldrineBackupPassphrasePolicyV1
