#include <gtest/gtest.h>

#include "kdf/PassphraseCreationPolicy.hpp"

namespace galdrine::kdf {

namespace {

struct PolicyCase {
  std::string_view name;
  std::string_view text;
  std::int64_t minimumCharacterCount;
  std::int64_t recommendedWordCount;
  bool accepted;
};

// Each refused case fails at one check and passes all checks before it, so a check that runs
// out of order or is missing shows up as a wrong answer.
const PolicyCase kPolicyCases[] = {
    {"a sound passphrase", "correct horse battery", 8, 6, true},
    {"a zero minimum refuses everything", "correct horse battery", 0, 6, false},
    {"a zero word count refuses everything", "correct horse battery", 8, 0, false},
    {"a negative minimum", "correct horse battery", -1, 6, false},
    {"seven characters", "abcdefg", 8, 6, false},
    {"eight characters", "abcdefgh", 8, 6, true},
    {"inner blanks count as characters", "ab cd ef", 8, 6, true},
    {"a combining accent is no character of its own", "abcdefge\u0301", 9, 6, false},
    {"a family emoji is one character", "abc\U0001F468\u200D\U0001F469\u200D\U0001F467", 5, 6, false},
    {"leading blank", " abcdefgh", 8, 6, false},
    {"trailing blank", "abcdefgh ", 8, 6, false},
    {"trailing no-break space", "abcdefgh\u00A0", 8, 6, false},
    {"inner tab", "abcd\tefgh", 8, 6, false},
    {"inner line feed", "abcd\nefgh", 8, 6, false},
    {"inner line separator", "abcd\u2028efgh", 8, 6, false},
    {"inner no-break space", "abcd\u00A0efgh", 8, 6, false},
    {"inner zero width space (Cf)", "abcd\u200Befgh", 8, 6, false},
    {"inner ideographic space", "abcd\u3000efgh", 8, 6, false},
    {"digits only", "12345678", 8, 6, false},
    {"digits and blanks", "1234 5678", 8, 6, false},
    {"other numbers only", "\u2160\u2161\u2162\u2163\u00BD\u0664\u0665\u0666", 8, 6, false},
    {"digits and one letter", "1234567a", 8, 6, true},
    {"one letter in groups", "aaaa aaaa", 8, 6, false},
    {"two letters alternating in case", "Ab aB Ab aB", 8, 6, false},
    {"three distinct letters", "abcabcab", 8, 6, false},
    {"accents and case fold together", "\u00E9E\u00E8\u00EAe\u00CBab", 8, 6, false},
    {"full-width letters fold to their narrow forms", "\uFF41\uFF42a\uFF43bcab", 8, 6, false},
    {"sharp s folds to two s", "\u00DFs\u00DFsabab", 8, 6, false},
    {"a period of four", "abcdabcd", 8, 6, false},
    {"a period of four after folding", "AbCdaBcD", 8, 6, false},
    {"no period once one letter differs", "abcdabce", 8, 6, true},
    {"a period of three", "abcdabcdabcd", 12, 6, false},
    {"a period that does not divide the length", "abcdeabcd", 8, 6, true},
    {"a period over blanks removed", "abcd abcd", 8, 6, false},
    {"one long word", "Tr0ub4dor&3", 8, 6, true},
    {"invalid UTF-8", "abcdefg\xFF", 8, 6, false},
};

class PassphraseCreationPolicyCases : public testing::TestWithParam<PolicyCase> {};

TEST_P(PassphraseCreationPolicyCases, DecidesAsExpected) {
  const PolicyCase& policyCase = GetParam();
  EXPECT_EQ(PassphraseCreationPolicy::accepts(policyCase.text, policyCase.minimumCharacterCount,
                                                      policyCase.recommendedWordCount),
            policyCase.accepted)
      << policyCase.name;
}

INSTANTIATE_TEST_SUITE_P(Table, PassphraseCreationPolicyCases, testing::ValuesIn(kPolicyCases),
                         [](const auto& testCase) { return "case" + std::to_string(testCase.index); });

}  // namespace

}  // namespace galdrine::kdf
