#include "kdf/PassphraseCreationPolicy.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace galdrine::kdf {

// Each refused row fails at one check and passes all checks before it, so a check that runs out
// of order or is missing shows up as a wrong answer. Characters are grapheme clusters; the
// folding ignores width, case and diacritics.
TEST(PassphraseCreationPolicy, DecidesEachCheckInOrder) {
  const std::tuple<std::string_view, std::int64_t, std::int64_t, bool> cases[] = {
      {"correct horse battery", 8, 6, true},                              // a sound passphrase
      {"correct horse battery", 0, 6, false},                             // 1: a zero minimum refuses everything
      {"correct horse battery", 8, 0, false},                             // 1: so does a zero word count
      {"abcdefg", 8, 6, false},                                           // 2: seven characters
      {"ab cd ef", 8, 6, true},                                           // 2: inner blanks count as characters
      {"abcdefge\u0301", 9, 6, false},                                    // 2: an accent is no character of its own
      {" abcdefgh", 8, 6, false},                                         // 3: leading blank
      {"abcd\u00A0efgh", 8, 6, false},                                    // 4: inner no-break space
      {"abcd\u200Befgh", 8, 6, false},                                    // 4: inner zero width space (Cf)
      {"1234 5678", 8, 6, false},                                         // 6: digits and blanks
      {"\u2160\u2161\u2162\u2163\u00BD\u0664\u0665\u0666", 8, 6, false},  // 6: other numbers only
      {"1234567a", 8, 6, true},                                           // 6: one letter among digits
      {"Ab aB Ab aB", 8, 6, false},                                       // 8: two letters once case is folded
      {"abcabcab", 8, 6, false},                                          // 8: three distinct letters
      {"\u00E9E\u00E8\u00EAe\u00CBab", 8, 6, false},                      // 8: accents and case fold together
      {"\uFF41\uFF42a\uFF43bcab", 8, 6, false},                           // 8: full width folds to narrow
      {"AbCdaBcD", 8, 6, false},                                          // 9: a period of four after folding
      {"abcdabce", 8, 6, true},                                           // 9: no period once one letter differs
      {"abcdeabcd", 8, 6, true},                                          // 9: a period must divide the length
      {"abcd abcd", 8, 6, false},                                         // 9: a period once blanks are removed
      {"abcdefg\xFF", 8, 6, false},                                       // not UTF-8
  };
  for (const auto& [text, minimumCharacterCount, recommendedWordCount, accepted] : cases) {
    EXPECT_EQ(PassphraseCreationPolicy::accepts(text, minimumCharacterCount, recommendedWordCount), accepted)
        << text << " with " << minimumCharacterCount << " and " << recommendedWordCount;
  }
}

}  // namespace galdrine::kdf
