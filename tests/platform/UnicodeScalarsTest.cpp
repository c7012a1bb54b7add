#include "platform/UnicodeScalars.hpp"

#include <gtest/gtest.h>

namespace galdrine::platform {

// Every scalar encodes and decodes back to itself; what is not a scalar becomes U+FFFD, and
// invalid UTF-8 decodes to nothing.
TEST(UnicodeScalars, EncodingRoundTripsEveryScalar) {
  std::u32string all;
  for (char32_t value = 0; value <= 0x10FFFF; ++value) {
    if (value < 0xD800 || value > 0xDFFF) all.push_back(value);
  }
  EXPECT_EQ(UnicodeScalars::scalars(UnicodeScalars::utf8(all)), all);
  EXPECT_EQ(UnicodeScalars::utf8(U"a\xD800"
                                 U"b" +
                                 std::u32string(1, char32_t{0x110000})),
            "a\uFFFDb\uFFFD");
  EXPECT_EQ(UnicodeScalars::scalars("\xC0\x80"), std::nullopt);
}

// White space includes line breaks and wide spaces, but not format characters (Cf).
TEST(UnicodeScalars, TrimsAndSplitsOnWhiteSpaceOnly) {
  using Pieces = std::vector<std::string_view>;
  EXPECT_EQ(UnicodeScalars::trimmingWhiteSpace(" \t\u2028a b\n\u3000"), "a b");
  EXPECT_EQ(UnicodeScalars::trimmingWhiteSpace(" \n "), "");
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace(" \tzoo\n\n\u00A0vote\u3000\u2029 x "), (Pieces{"zoo", "vote", "x"}));
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace("a\u200Bb"), (Pieces{"a\u200Bb"}));
  EXPECT_EQ(UnicodeScalars::splittingOnWhiteSpace("a \xFF"), std::nullopt);
}

// Letters are L* (Lm and Lo included) and numbers N* (Nl and No included); marks, symbols and
// punctuation are neither. At most the given number of scalars is kept.
TEST(UnicodeScalars, KeepsLettersAndNumbersUpToAScalarCount) {
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("j-p.g 4_\u02B0\u4E00\u2167\u00BD\U0001F600", 16),
            "jpg4\u02B0\u4E00\u2167\u00BD");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("e\u0301\uFF4A\uFF11", 16), "e\uFF4A\uFF11");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("\u00E9\u00E9\u00E9x", 2), "\u00E9\u00E9");
  EXPECT_EQ(UnicodeScalars::keepingLettersAndNumbers("a\x80", 16), std::nullopt);
}

}  // namespace galdrine::platform
