#include "platform/GraphemeClusters.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace galdrine::platform {

// Marks stay with their base; a family joined by zero width joiners, a flag, and a carriage
// return with its line feed are one character each. For every limit, truncation keeps the
// longest prefix of whole characters that fits.
TEST(GraphemeClusters, SplitsIntoCharactersAndTruncatesBetweenThem) {
  const std::vector<std::string_view> characters = {
      "a", "\u00E9", "e\u0301", "\U0001F468\u200D\U0001F469\u200D\U0001F467", "\U0001F1EB\U0001F1F7", "\r\n", "x"};
  std::string text;
  for (const std::string_view character : characters) text += character;
  EXPECT_EQ(GraphemeClusters::clusters(text), characters);
  for (std::size_t limit = 0; limit <= text.size() + 1; ++limit) {
    std::size_t fitting = 0;
    for (std::size_t index = 0; index < characters.size() && fitting + characters[index].size() <= limit; ++index) {
      fitting += characters[index].size();
    }
    EXPECT_EQ(GraphemeClusters::truncatedToUTF8ByteCount(text, limit), std::string_view(text).substr(0, fitting))
        << "limit " << limit;
  }
}

TEST(GraphemeClusters, RefusesInvalidAndOverlongText) {
  EXPECT_EQ(GraphemeClusters::clusters("a\xFF"), std::unexpected(UnicodeTextError::invalidUTF8));
  EXPECT_EQ(GraphemeClusters::truncatedToUTF8ByteCount("\xE2\x82", 1), std::unexpected(UnicodeTextError::invalidUTF8));
  const std::string overlong(UnicodeText::maximumUTF8ByteCount + 1, 'a');
  EXPECT_EQ(GraphemeClusters::truncatedToUTF8ByteCount(overlong, 8), std::unexpected(UnicodeTextError::textTooLong));
}

}  // namespace galdrine::platform
