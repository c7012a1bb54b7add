#include <gtest/gtest.h>

#include "GaldrinePlatform/GaldrineUnicodeScalars.hpp"

TEST(GaldrineUnicodeScalars, ControlMeansCcOrCfOnly) {
  EXPECT_TRUE(GaldrineUnicodeScalars::isControl(U'\t'));
  EXPECT_TRUE(GaldrineUnicodeScalars::isControl(U'\u200B'));   // zero width space, Cf
  EXPECT_FALSE(GaldrineUnicodeScalars::isControl(U'\u2028'));  // line separator, Zl
  EXPECT_FALSE(GaldrineUnicodeScalars::isControl(U'a'));
}

TEST(GaldrineUnicodeScalars, TrimsWhiteSpaceIncludingLineBreaksFromBothEnds) {
  EXPECT_EQ(GaldrineUnicodeScalars::trimmingWhiteSpace(" \t\u2028a b\n\u3000"), "a b");
  EXPECT_EQ(GaldrineUnicodeScalars::trimmingWhiteSpace(" \n "), "");
  EXPECT_EQ(GaldrineUnicodeScalars::trimmingWhiteSpace("abc"), "abc");
}

TEST(GaldrineUnicodeScalars, RefusesInvalidUTF8) {
  EXPECT_FALSE(GaldrineUnicodeScalars::scalars("\xC0\x80").has_value());
  EXPECT_EQ(GaldrineUnicodeScalars::scalars("a\u00E9"), std::u32string(U"a\u00E9"));
}
