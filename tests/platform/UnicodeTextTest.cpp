#include <gtest/gtest.h>

#include <string>

#include "platform/UnicodeText.hpp"

namespace galdrine::platform {

namespace {

using Operation = std::expected<std::string, UnicodeTextError> (*)(std::string_view);

struct TextCase {
  std::string_view name;
  Operation operation;
  std::string_view input;
  std::string_view expected;
};

// Expected values are worked out by hand from the Unicode data files (UnicodeData.txt
// decompositions, CaseFolding.txt statuses C and F), not taken from this code.
const TextCase kTextCases[] = {
    {"NFC composes a combining acute", UnicodeText::normalizedNFC, "e\u0301", "\u00E9"},
    {"NFC maps the angstrom sign to A with ring", UnicodeText::normalizedNFC, "\u212B", "\u00C5"},
    {"NFC composes Hangul jamo", UnicodeText::normalizedNFC, "\u1100\u1161", "\uAC00"},
    {"NFC keeps compatibility characters", UnicodeText::normalizedNFC, "\uFB01\uFF21", "\uFB01\uFF21"},
    {"NFKD splits a ligature", UnicodeText::normalizedNFKD, "\uFB01", "fi"},
    {"NFKD narrows full-width letters", UnicodeText::normalizedNFKD, "\uFF21\uFF42", "Ab"},
    {"NFKD decomposes accents", UnicodeText::normalizedNFKD, "\u00E9", "e\u0301"},
    {"NFKD turns a circled digit into a digit", UnicodeText::normalizedNFKD, "\u2460", "1"},
    {"lower case ignores Turkish rules", UnicodeText::lowercased, "\u0130I", "i\u0307i"},
    {"lower case writes a final sigma", UnicodeText::lowercased, "\u039F\u0394\u039F\u03A3", "\u03BF\u03B4\u03BF\u03C2"},
    {"lower case keeps full width", UnicodeText::lowercased, "\uFF21", "\uFF41"},
    {"case folding expands sharp s", UnicodeText::caseFolded, "Stra\u00DFe", "strasse"},
    {"case folding keeps dotless i", UnicodeText::caseFolded, "\u0131I", "\u0131i"},
    {"case folding maps final sigma", UnicodeText::caseFolded, "\u03C2\u03A3", "\u03C3\u03C3"},
    {"case folding keeps accents", UnicodeText::caseFolded, "\u00C9", "\u00E9"},
    {"folding drops accents and case", UnicodeText::caseAndDiacriticFolded, "R\u00E9sum\u00E9.JPG", "resume.jpg"},
    {"folding treats decomposed input alike", UnicodeText::caseAndDiacriticFolded, "Re\u0301sume\u0301", "resume"},
    {"folding of capital sharp s", UnicodeText::caseAndDiacriticFolded, "\u1E9E", "ss"},
    {"folding of dotted capital I leaves no dot", UnicodeText::caseAndDiacriticFolded, "\u0130stanbul", "istanbul"},
    {"folding keeps dotless i apart from i", UnicodeText::caseAndDiacriticFolded, "\u0131", "\u0131"},
    {"folding drops marks that case folding brings", UnicodeText::caseAndDiacriticFolded, "\u01F0", "j"},
    {"folding of Greek with tonos", UnicodeText::caseAndDiacriticFolded, "\u03A3\u038A\u03A3", "\u03C3\u03B9\u03C3"},
    {"folding maps the ohm sign", UnicodeText::caseAndDiacriticFolded, "\u2126", "\u03C9"},
    {"folding keeps enclosing marks", UnicodeText::caseAndDiacriticFolded, "a\u20DD", "a\u20DD"},
    {"folding keeps spacing marks", UnicodeText::caseAndDiacriticFolded, "\u0915\u093E", "\u0915\u093E"},
    {"folding recomposes Hangul", UnicodeText::caseAndDiacriticFolded, "\uD55C", "\uD55C"},
    {"folding without width keeps full width", UnicodeText::caseAndDiacriticFolded, "\uFF21\uFF22", "\uFF41\uFF42"},
    {"folding keeps ligatures apart from case", UnicodeText::caseAndDiacriticFolded, "\uFB01", "fi"},
    {"width folding narrows letters", UnicodeText::caseDiacriticAndWidthFolded, "\uFF21\uFF42\uFF43", "abc"},
    {"width folding narrows digits", UnicodeText::caseDiacriticAndWidthFolded, "\uFF11", "1"},
    {"width folding widens half-width katakana", UnicodeText::caseDiacriticAndWidthFolded, "\uFF76", "\u30AB"},
    {"half-width voiced mark folds like a diacritic", UnicodeText::caseDiacriticAndWidthFolded, "\uFF76\uFF9E", "\u30AB"},
    {"a voiced katakana loses its mark", UnicodeText::caseDiacriticAndWidthFolded, "\u30AC", "\u30AB"},
    {"ideographic space becomes a space", UnicodeText::caseDiacriticAndWidthFolded, "a\u3000b", "a b"},
    {"width folding leaves other compatibility forms", UnicodeText::caseDiacriticAndWidthFolded, "\u2460", "\u2460"},
    {"width folding with accents and case", UnicodeText::caseDiacriticAndWidthFolded, "\uFF21\u0301\u00C9", "ae"},
};

class UnicodeTextCases : public testing::TestWithParam<TextCase> {};

TEST_P(UnicodeTextCases, GivesTheExpectedText) {
  const auto result = GetParam().operation(GetParam().input);
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, UnicodeTextCases, testing::ValuesIn(kTextCases),
                         [](const auto& testCase) { return "case" + std::to_string(testCase.index); });

const Operation kAllOperations[] = {
    UnicodeText::normalizedNFC,          UnicodeText::normalizedNFKD,
    UnicodeText::lowercased,             UnicodeText::caseFolded,
    UnicodeText::caseAndDiacriticFolded, UnicodeText::caseDiacriticAndWidthFolded,
};

TEST(UnicodeText, EveryOperationRefusesInvalidUTF8AndOverlongInput) {
  const std::string overlong(UnicodeText::maximumUTF8ByteCount + 1, 'a');
  const std::string atLimit(UnicodeText::maximumUTF8ByteCount, 'a');
  for (const Operation operation : kAllOperations) {
    EXPECT_EQ(operation("a\xC0\x80"), std::unexpected(UnicodeTextError::invalidUTF8));
    EXPECT_EQ(operation("\xED\xA0\x80"), std::unexpected(UnicodeTextError::invalidUTF8));  // a surrogate
    EXPECT_EQ(operation(overlong), std::unexpected(UnicodeTextError::textTooLong));
    EXPECT_TRUE(operation(atLimit).has_value());
    EXPECT_EQ(operation(""), std::string());
  }
}

// Folding is a comparison key: applying it to its own result must change nothing, or two
// names that collide once would not collide again.
TEST(UnicodeText, FoldingIsIdempotent) {
  for (const TextCase& textCase : kTextCases) {
    for (const auto fold : {UnicodeText::caseAndDiacriticFolded, UnicodeText::caseDiacriticAndWidthFolded}) {
      const auto once = fold(textCase.input);
      ASSERT_TRUE(once.has_value()) << textCase.name;
      EXPECT_EQ(fold(*once), *once) << textCase.name;
    }
  }
}

}  // namespace

}  // namespace galdrine::platform
