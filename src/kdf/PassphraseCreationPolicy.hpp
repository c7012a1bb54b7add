#pragma once
// PassphraseCreationPolicy is the rule for a passphrase that a user is choosing. It
// judges and changes nothing: the passphrase that is used is the text as typed. It is not
// consulted when an existing passphrase is used, so one that an older rule let through keeps
// working. It scores no entropy and holds no word list; the limits come from the caller.

#include <cstdint>
#include <string_view>

namespace galdrine::kdf {

namespace PassphraseCreationPolicy {

// accepts runs these checks in order; the first that fails refuses the passphrase:
//  1. both limits are at least 1 (recommendedWordCount has no other effect);
//  2. it has at least minimumCharacterCount characters (grapheme clusters, blanks included);
//  3. no whitespace or line break at either end;
//  4. no control scalar (Cc, Cf) and no whitespace scalar other than U+0020 anywhere;
//  5. without its whitespace characters, something is left;
//  6. of what is left, at least one character is not a number;
//  7. what is left is folded ignoring width, case and diacritics;
//  8. the folded text has at least 4 distinct characters;
//  9. the folded text is no repetition of a shorter unit.
// Text that is not valid UTF-8, or too long for the text services, is refused.
[[nodiscard]] bool accepts(std::string_view text, std::int64_t minimumCharacterCount,
                           std::int64_t recommendedWordCount);

}  // namespace PassphraseCreationPolicy

}  // namespace galdrine::kdf
