#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/UniformType.hpp"

namespace galdrine::platform {

namespace {

std::vector<std::string> fields(const std::string& line, char separator) {
  std::vector<std::string> split;
  std::stringstream stream(line);
  for (std::string field; std::getline(stream, field, separator);) split.push_back(field);
  return split;
}

// The compiled registry must say what the table in the source tree says, line for line: this
// catches a generator that drops, reorders or mangles rows.
TEST(UniformType, CompiledRegistryMatchesTheSourceTable) {
  std::ifstream table(std::filesystem::path(GALDRINE_SOURCE_DIRECTORY) / "resources" / "uniform-types.tsv");
  ASSERT_TRUE(table.is_open());
  std::size_t rowCount = 0;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.front() == '#') continue;
    const auto columns = fields(line, '\t');
    ASSERT_EQ(columns.size(), 3u) << line;
    const auto type = UniformType::fromIdentifier(columns[0]);
    ASSERT_TRUE(type.has_value()) << line;
    EXPECT_EQ(type->identifier(), columns[0]);
    EXPECT_EQ(type->conformsToImage(), columns[1] == "image") << line;
    EXPECT_EQ(type->conformsToMovie(), columns[1] == "movie") << line;
    const std::vector<std::string> expectedTags = columns[2] == "-" ? std::vector<std::string>{} : fields(columns[2], ',');
    const std::vector<std::string> tags(type->fileNameExtensionTags().begin(), type->fileNameExtensionTags().end());
    EXPECT_EQ(tags, expectedTags) << line;
    EXPECT_EQ(type->preferredFileNameExtension().has_value(), !expectedTags.empty()) << line;
    ++rowCount;
  }
  EXPECT_GT(rowCount, 30u);
}

TEST(UniformType, LooksUpIdentifiersIgnoringASCIICaseOnly) {
  const auto jpeg = UniformType::fromIdentifier("Public.JPEG");
  ASSERT_TRUE(jpeg.has_value());
  EXPECT_EQ(jpeg->identifier(), "public.jpeg");
  EXPECT_EQ(jpeg->preferredFileNameExtension(), "jpeg");
  EXPECT_EQ(jpeg, UniformType::fromIdentifier("public.jpeg"));
  for (const std::string_view unknown : {"", "public.jpe", "public.jpeg ", "jpeg", "dyn.ah62d4rv4ge80", "PUBL\u0130C.jpeg"}) {
    EXPECT_FALSE(UniformType::fromIdentifier(unknown).has_value()) << unknown;
  }
}

TEST(UniformType, AbstractTypesResolveWithoutTags) {
  const auto video = UniformType::fromIdentifier("public.video");
  ASSERT_TRUE(video.has_value());
  EXPECT_TRUE(video->conformsToMovie());
  EXPECT_FALSE(video->conformsToImage());
  EXPECT_TRUE(video->fileNameExtensionTags().empty());
  EXPECT_EQ(video->preferredFileNameExtension(), std::nullopt);
}

}  // namespace

}  // namespace galdrine::platform
