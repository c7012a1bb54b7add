#include <gtest/gtest.h>

#include "platform/UnicodeScalars.hpp"

namespace galdrine::platform {

TEST(UnicodeScalars, ControlMeansCcOrCfOnly) {
  EXPECT_TRUE(UnicodeScalars::isControl(U'\t'));
  EXPECT_TRUE(UnicodeScalars::isControl(U'\u200B'));   // zero width space, Cf
  EXPECT_FALSE(UnicodeScalars::isControl(U'\u2028'));  // line separator, Zl
  EXPECT_FALSE(UnicodeScalars::isControl(U'a'));
}

TEST(UnicodeScalars, TrimsWhiteSpaceIncludingLineBreaksFromBothEnds) {
  EXPECT_EQ(UnicodeScalars::trimmingWhiteSpace(" \t\u2028a b\n\u3000"), "a b");
  EXPECT_EQ(UnicodeScalars::trimmingWhiteSpace(" \n "), "");
  EXPECT_EQ(UnicodeScalars::trimmingWhiteSpace("abc"), "abc");
}

TEST(UnicodeScalars, RefusesInvalidUTF8) {
  EXPECT_FALSE(UnicodeScalars::scalars("\xC0\x80").has_value());
  EXPECT_EQ(UnicodeScalars::scalars("a\u00E9"), std::u32string(U"a\u00E9"));
}

TEST(UnicodeScalars, LettersAreLStarAndNumbersNStar) {
  struct ClassCase { char32_t scalar; bool letter; bool number; };
  const ClassCase cases[] = {
      {U'a', true, false},      {U'\u00DF', true, false},  {U'\u02B0', true, false},  // Lm
      {U'\u4E00', true, false},                                                          // Lo
      {U'7', false, true},      {U'\u2167', false, true},  {U'\u00BD', false, true},  // Nl, No
      {U'\uFF11', false, true}, {U'\u0301', false, false}, {U'-', false, false},
      {U' ', false, false},     {U'_', false, false},      {U'\U0001F600', false, false},
  };
  for (const ClassCase& classCase : cases) {
    EXPECT_EQ(UnicodeScalars::isLetter(classCase.scalar), classCase.letter) << std::hex << static_cast<std::uint32_t>(classCase.scalar);
    EXPECT_EQ(UnicodeScalars::isNumber(classCase.scalar), classCase.number) << std::hex << static_cast<std::uint32_t>(classCase.scalar);
  }
}

TEST(UnicodeScalars, SplitsOnEveryWhiteSpaceDroppingEmptyPieces) {
  using Pieces = std::vector<std::string_view>;
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace(" \tzoo\n\n\u00A0vote\u3000\u2029 x "), (Pieces{"zoo", "vote", "x"}));
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace("one"), (Pieces{"one"}));
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace(" \r\n "), Pieces{});
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace("a\u200Bb"), (Pieces{"a\u200Bb"}));  // Cf, not White_Space
  EXPECT_FALSE(UnicodeScalars::splittingOnWhiteSpace("a \xFF").has_value());
}

TEST(UnicodeScalars, KeepsLettersAndNumbersUpToAScalarCount) {
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("j-p.g 4", 16), "jpg4");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("e\u0301\uFF4A\u2167", 16), "e\uFF4A\u2167");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("\u00E9\u00E9\u00E9x", 2), "\u00E9\u00E9");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("!?", 16), "");
  EXPECT_FALSE(UnicodeScalars::keepingLettersAndNumbers("a\x80", 16).has_value());
}

// Every scalar encodes and decodes back to itself; what is not a scalar becomes U+FFFD.
TEST(UnicodeScalars, EncodingRoundTripsEveryScalar) {
  std::u32string all;
  for (char32_t value = 0; value <= 0x10FFFF; ++value) {
    if (value < 0xD800 || value > 0xDFFF) all.push_back(value);
  }
  EXPECT_EQ(UnicodeScalars::scalars(UnicodeScalars::utf8(all)), all);
  EXPECT_EQ(UnicodeScalars::utf8(U"a\xD800" U"b"), "a\uFFFDb");
  EXPECT_EQ(UnicodeScalars::utf8(std::u32string(1, char32_t{0x110000})), "\uFFFD");
}

}  // namespace galdrine::platform
