#include "platform/UnicodeText.hpp"

#include <gtest/gtest.h>

#include <string>

namespace galdrine::platform {

using Operation = std::expected<std::string, UnicodeTextError> (*)(std::string_view);

// Expected values are worked out by hand from the Unicode data files (UnicodeData.txt
// decompositions, CaseFolding.txt statuses C and F), not taken from this code. One row per
// plain service shows that the right one is wired with the rules we chose (root locale, full
// non-Turkic folding); the folds that we compose get rows for their steps.
const struct {
  Operation operation;
  std::string_view input;
  std::string_view expected;
} kTextCases[] = {
    {UnicodeText::normalizedNFC, "e\u0301\uFB01", "\u00E9\uFB01"},
    {UnicodeText::normalizedNFKD, "\u00E9\uFB01\uFF21", "e\u0301fiA"},
    {UnicodeText::lowercased, "\u0130I\u039F\u03A3", "i\u0307i\u03BF\u03C2"},
    {UnicodeText::caseFolded, "Stra\u00DFe\u0131\u00C9", "strasse\u0131\u00E9"},
    {UnicodeText::caseAndDiacriticFolded, "R\u00E9sume\u0301.JPG\u1E9E", "resume.jpgss"},
    {UnicodeText::caseAndDiacriticFolded, "\u0130stanbul\u0131\u01F0", "istanbul\u0131j"},
    {UnicodeText::caseAndDiacriticFolded, "\u03A3\u038A\u03A3\u2126", "\u03C3\u03B9\u03C3\u03C9"},
    // Only nonspacing marks go; enclosing and spacing marks, Hangul and widths stay.
    {UnicodeText::caseAndDiacriticFolded, "a\u20DD\u0915\u093E\uD55C\uFF21\uFB01", "a\u20DD\u0915\u093E\uD55C\uFF41fi"},
    {UnicodeText::caseDiacriticAndWidthFolded, "\uFF21\uFF42\uFF11\u3000\u2460", "ab1 \u2460"},
    {UnicodeText::caseDiacriticAndWidthFolded, "\uFF76\uFF76\uFF9E\u30AC\uFF21\u0301\u00C9", "\u30AB\u30AB\u30ABae"},
};

TEST(UnicodeText, GivesTheExpectedTextAndFoldsIdempotently) {
  for (const auto& textCase : kTextCases) {
    EXPECT_EQ(textCase.operation(textCase.input), textCase.expected) << textCase.input;
    // A fold is a comparison key: folding its own result again must change nothing.
    for (const Operation fold : {UnicodeText::caseAndDiacriticFolded, UnicodeText::caseDiacriticAndWidthFolded}) {
      const auto once = fold(textCase.input);
      ASSERT_TRUE(once.has_value());
      EXPECT_EQ(fold(*once), once) << textCase.input;
    }
  }
}

TEST(UnicodeText, EveryOperationRefusesInvalidUTF8AndInputBeyondItsBound) {
  const std::string overlong(UnicodeText::maximumUTF8ByteCount + 1, 'a');
  const std::string atLimit(UnicodeText::maximumUTF8ByteCount, 'a');
  for (const Operation operation :
       {UnicodeText::normalizedNFC, UnicodeText::normalizedNFKD, UnicodeText::lowercased, UnicodeText::caseFolded,
        UnicodeText::caseAndDiacriticFolded, UnicodeText::caseDiacriticAndWidthFolded}) {
    EXPECT_EQ(operation("a\xC0\x80"), std::unexpected(UnicodeTextError::invalidUTF8));
    EXPECT_EQ(operation("\xED\xA0\x80"), std::unexpected(UnicodeTextError::invalidUTF8));  // a surrogate
    EXPECT_EQ(operation(overlong), std::unexpected(UnicodeTextError::textTooLong));
    EXPECT_TRUE(operation(atLimit).has_value());
  }
}

}  // namespace galdrine::platform
