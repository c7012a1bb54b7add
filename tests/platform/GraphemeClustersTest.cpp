#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/GraphemeClusters.hpp"
#include "platform/UnicodeText.hpp"

namespace galdrine::platform {

namespace {

struct ClusterCase {
  std::string_view name;
  std::string_view text;
  std::vector<std::string_view> expected;
};

const ClusterCase kClusterCases[] = {
    {"empty", "", {}},
    {"ASCII letters", "abc", {"a", "b", "c"}},
    {"combining marks stay with their base", "e\u0301a\u0308\u0301b", {"e\u0301", "a\u0308\u0301", "b"}},
    {"a family joined by zero width joiners", "\U0001F468\u200D\U0001F469\u200D\U0001F467!",
     {"\U0001F468\u200D\U0001F469\u200D\U0001F467", "!"}},
    {"a skin tone modifier", "\U0001F44D\U0001F3FD", {"\U0001F44D\U0001F3FD"}},
    {"flags pair their regional indicators", "\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA\U0001F1E9",
     {"\U0001F1EB\U0001F1F7", "\U0001F1E9\U0001F1EA", "\U0001F1E9"}},
    {"carriage return and line feed", "a\r\nb", {"a", "\r\n", "b"}},
    {"Hangul jamo L V T", "\u1100\u1161\u11A8\u1100", {"\u1100\u1161\u11A8", "\u1100"}},
    {"full-width letters", "\uFF21\uFF22", {"\uFF21", "\uFF22"}},
};

TEST(GraphemeClusters, SplitsIntoUserPerceivedCharacters) {
  for (const ClusterCase& clusterCase : kClusterCases) {
    const auto clusters = GraphemeClusters::clusters(clusterCase.text);
    ASSERT_TRUE(clusters.has_value()) << clusterCase.name;
    EXPECT_EQ(*clusters, clusterCase.expected) << clusterCase.name;
    EXPECT_EQ(GraphemeClusters::count(clusterCase.text), clusterCase.expected.size()) << clusterCase.name;
  }
}

// For every limit, the result is the longest prefix of whole characters that fits.
TEST(GraphemeClusters, TruncationKeepsTheLongestPrefixOfWholeCharacters) {
  const std::string text = "a\u00E9e\u0301\U0001F468\u200D\U0001F469\u200D\U0001F467\U0001F1EB\U0001F1F7x";
  const auto clusters = GraphemeClusters::clusters(text);
  ASSERT_TRUE(clusters.has_value());
  for (std::size_t limit = 0; limit <= text.size() + 1; ++limit) {
    std::size_t expectedByteCount = 0;
    for (const std::string_view cluster : *clusters) {
      if (expectedByteCount + cluster.size() > limit) break;
      expectedByteCount += cluster.size();
    }
    const auto truncated = GraphemeClusters::truncatedToUTF8ByteCount(text, limit);
    ASSERT_TRUE(truncated.has_value());
    EXPECT_EQ(*truncated, std::string_view(text).substr(0, expectedByteCount)) << "limit " << limit;
  }
}

TEST(GraphemeClusters, RefusesInvalidAndOverlongText) {
  EXPECT_EQ(GraphemeClusters::count("a\xFF"), std::unexpected(UnicodeTextError::invalidUTF8));
  EXPECT_EQ(GraphemeClusters::truncatedToUTF8ByteCount("\xE2\x82", 1),
            std::unexpected(UnicodeTextError::invalidUTF8));
  const std::string overlong(UnicodeText::maximumUTF8ByteCount + 1, 'a');
  EXPECT_EQ(GraphemeClusters::clusters(overlong).error(), UnicodeTextError::textTooLong);
}

}  // namespace

}  // namespace galdrine::platform
