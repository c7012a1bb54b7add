#pragma once
// BackupPassphrasePolicy holds the figures for a backup passphrase, and judges one
// that is being set. A backup passphrase protects packages for years and cannot be changed on
// one already handed out, so weak ones are refused when set. Opening an existing envelope never
// consults this policy.

#include <cstdint>

#include "platform/Bytes.hpp"

namespace galdrine::envelope {

namespace BackupPassphrasePolicy {

inline constexpr std::int64_t minimumCharacterCount = 8;
// minimumWordCount is a recommendation to show to the user; it does not enter the decision.
inline constexpr std::int64_t minimumWordCount = 6;

// accepts decodes the passphrase bytes as UTF-8, refusing bytes that are not, and then applies
// PassphraseCreationPolicy with the figures above. It changes nothing: the bytes that
// go to the key derivation are the bytes as typed.
[[nodiscard]] bool accepts(ByteView passphrase);

}  // namespace BackupPassphrasePolicy

}  // namespace galdrine::envelope
