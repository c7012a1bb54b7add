#include <gtest/gtest.h>

#include <string>

#include "GaldrinePlatform/GaldrineUnicodeText.hpp"

namespace {

using Operation = std::expected<std::string, GaldrineUnicodeTextError> (*)(std::string_view);

struct TextCase {
  std::string_view name;
  Operation operation;
  std::string_view input;
  std::string_view expected;
};

// Expected values are worked out by hand from the Unicode data files (UnicodeData.txt
// decompositions, CaseFolding.txt statuses C and F), not taken from this code.
const TextCase kTextCases[] = {
    {"NFC composes a combining acute", GaldrineUnicodeText::normalizedNFC, "e\u0301", "\u00E9"},
    {"NFC maps the angstrom sign to A with ring", GaldrineUnicodeText::normalizedNFC, "\u212B", "\u00C5"},
    {"NFC composes Hangul jamo", GaldrineUnicodeText::normalizedNFC, "\u1100\u1161", "\uAC00"},
    {"NFC keeps compatibility characters", GaldrineUnicodeText::normalizedNFC, "\uFB01\uFF21", "\uFB01\uFF21"},
    {"NFKD splits a ligature", GaldrineUnicodeText::normalizedNFKD, "\uFB01", "fi"},
    {"NFKD narrows full-width letters", GaldrineUnicodeText::normalizedNFKD, "\uFF21\uFF42", "Ab"},
    {"NFKD decomposes accents", GaldrineUnicodeText::normalizedNFKD, "\u00E9", "e\u0301"},
    {"NFKD turns a circled digit into a digit", GaldrineUnicodeText::normalizedNFKD, "\u2460", "1"},
    {"lower case ignores Turkish rules", GaldrineUnicodeText::lowercased, "\u0130I", "i\u0307i"},
    {"lower case writes a final sigma", GaldrineUnicodeText::lowercased, "\u039F\u0394\u039F\u03A3", "\u03BF\u03B4\u03BF\u03C2"},
    {"lower case keeps full width", GaldrineUnicodeText::lowercased, "\uFF21", "\uFF41"},
    {"case folding expands sharp s", GaldrineUnicodeText::caseFolded, "Stra\u00DFe", "strasse"},
    {"case folding keeps dotless i", GaldrineUnicodeText::caseFolded, "\u0131I", "\u0131i"},
    {"case folding maps final sigma", GaldrineUnicodeText::caseFolded, "\u03C2\u03A3", "\u03C3\u03C3"},
    {"case folding keeps accents", GaldrineUnicodeText::caseFolded, "\u00C9", "\u00E9"},
    {"folding drops accents and case", GaldrineUnicodeText::caseAndDiacriticFolded, "R\u00E9sum\u00E9.JPG", "resume.jpg"},
    {"folding treats decomposed input alike", GaldrineUnicodeText::caseAndDiacriticFolded, "Re\u0301sume\u0301", "resume"},
    {"folding of capital sharp s", GaldrineUnicodeText::caseAndDiacriticFolded, "\u1E9E", "ss"},
    {"folding of dotted capital I leaves no dot", GaldrineUnicodeText::caseAndDiacriticFolded, "\u0130stanbul", "istanbul"},
    {"folding keeps dotless i apart from i", GaldrineUnicodeText::caseAndDiacriticFolded, "\u0131", "\u0131"},
    {"folding drops marks that case folding brings", GaldrineUnicodeText::caseAndDiacriticFolded, "\u01F0", "j"},
    {"folding of Greek with tonos", GaldrineUnicodeText::caseAndDiacriticFolded, "\u03A3\u038A\u03A3", "\u03C3\u03B9\u03C3"},
    {"folding maps the ohm sign", GaldrineUnicodeText::caseAndDiacriticFolded, "\u2126", "\u03C9"},
    {"folding keeps enclosing marks", GaldrineUnicodeText::caseAndDiacriticFolded, "a\u20DD", "a\u20DD"},
    {"folding keeps spacing marks", GaldrineUnicodeText::caseAndDiacriticFolded, "\u0915\u093E", "\u0915\u093E"},
    {"folding recomposes Hangul", GaldrineUnicodeText::caseAndDiacriticFolded, "\uD55C", "\uD55C"},
    {"folding without width keeps full width", GaldrineUnicodeText::caseAndDiacriticFolded, "\uFF21\uFF22", "\uFF41\uFF42"},
    {"folding keeps ligatures apart from case", GaldrineUnicodeText::caseAndDiacriticFolded, "\uFB01", "fi"},
    {"width folding narrows letters", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\uFF21\uFF42\uFF43", "abc"},
    {"width folding narrows digits", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\uFF11", "1"},
    {"width folding widens half-width katakana", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\uFF76", "\u30AB"},
    {"half-width voiced mark folds like a diacritic", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\uFF76\uFF9E", "\u30AB"},
    {"a voiced katakana loses its mark", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\u30AC", "\u30AB"},
    {"ideographic space becomes a space", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "a\u3000b", "a b"},
    {"width folding leaves other compatibility forms", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\u2460", "\u2460"},
    {"width folding with accents and case", GaldrineUnicodeText::caseDiacriticAndWidthFolded, "\uFF21\u0301\u00C9", "ae"},
};

class GaldrineUnicodeTextCases : public testing::TestWithParam<TextCase> {};

TEST_P(GaldrineUnicodeTextCases, GivesTheExpectedText) {
  const auto result = GetParam().operation(GetParam().input);
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, GaldrineUnicodeTextCases, testing::ValuesIn(kTextCases),
                         [](const auto& info) { return "case" + std::to_string(info.index); });

const Operation kAllOperations[] = {
    GaldrineUnicodeText::normalizedNFC,          GaldrineUnicodeText::normalizedNFKD,
    GaldrineUnicodeText::lowercased,             GaldrineUnicodeText::caseFolded,
    GaldrineUnicodeText::caseAndDiacriticFolded, GaldrineUnicodeText::caseDiacriticAndWidthFolded,
};

TEST(GaldrineUnicodeText, EveryOperationRefusesInvalidUTF8AndOverlongInput) {
  const std::string overlong(GaldrineUnicodeText::maximumUTF8ByteCount + 1, 'a');
  const std::string atLimit(GaldrineUnicodeText::maximumUTF8ByteCount, 'a');
  for (const Operation operation : kAllOperations) {
    EXPECT_EQ(operation("a\xC0\x80"), std::unexpected(GaldrineUnicodeTextError::invalidUTF8));
    EXPECT_EQ(operation("\xED\xA0\x80"), std::unexpected(GaldrineUnicodeTextError::invalidUTF8));  // a surrogate
    EXPECT_EQ(operation(overlong), std::unexpected(GaldrineUnicodeTextError::textTooLong));
    EXPECT_TRUE(operation(atLimit).has_value());
    EXPECT_EQ(operation(""), std::string());
  }
}

// Folding is a comparison key: applying it to its own result must change nothing, or two
// names that collide once would not collide again.
TEST(GaldrineUnicodeText, FoldingIsIdempotent) {
  for (const TextCase& textCase : kTextCases) {
    for (const auto fold : {GaldrineUnicodeText::caseAndDiacriticFolded, GaldrineUnicodeText::caseDiacriticAndWidthFolded}) {
      const auto once = fold(textCase.input);
      ASSERT_TRUE(once.has_value()) << textCase.name;
      EXPECT_EQ(fold(*once), *once) << textCase.name;
    }
  }
}

}  // namespace
