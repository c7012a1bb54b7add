#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "platform/Random.hpp"

namespace galdrine::platform {

namespace {

bool isLowerHexDigit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

TEST(Random, UUIDTextIsLowerCaseVersion4WithTheStandardVariant) {
  std::set<std::string> seen;
  for (int attempt = 0; attempt < 64; ++attempt) {
    const auto text = Random::lowercaseUUIDText();
    ASSERT_TRUE(text.has_value());
    ASSERT_EQ(text->size(), 36u) << *text;
    for (std::size_t index = 0; index < text->size(); ++index) {
      const bool hyphen = index == 8 || index == 13 || index == 18 || index == 23;
      EXPECT_TRUE(hyphen ? (*text)[index] == '-' : isLowerHexDigit((*text)[index])) << *text << " at " << index;
    }
    EXPECT_EQ((*text)[14], '4') << *text;
    EXPECT_NE(std::string("89ab").find((*text)[19]), std::string::npos) << *text;
    seen.insert(*text);
  }
  EXPECT_EQ(seen.size(), 64u);
}

// Two fills of 64 bytes agreeing, or one leaving a 16-byte run of zeros, would mean the buffer
// was not written: the chance of either from a working source is below 2^-100.
TEST(Random, FillWritesTheWholeBuffer) {
  std::vector<std::uint8_t> first(64, 0), second(64, 0);
  ASSERT_EQ(Random::fill(first), 0);
  ASSERT_EQ(Random::fill(second), 0);
  EXPECT_NE(first, second);
  for (std::size_t start = 0; start + 16 <= first.size(); start += 16) {
    EXPECT_FALSE(std::all_of(first.begin() + static_cast<std::ptrdiff_t>(start),
                             first.begin() + static_cast<std::ptrdiff_t>(start + 16),
                             [](std::uint8_t byte) { return byte == 0; }));
  }
  std::vector<std::uint8_t> empty;
  EXPECT_EQ(Random::fill(empty), 0);
}

}  // namespace

}  // namespace galdrine::platform
