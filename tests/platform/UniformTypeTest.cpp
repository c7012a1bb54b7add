#include "platform/UniformType.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <ranges>
#include <string>
#include <vector>

namespace galdrine::platform {

namespace {

std::vector<std::string> fields(std::string_view line, char separator) {
  std::vector<std::string> split;
  for (const auto field : std::views::split(line, separator)) split.emplace_back(field.begin(), field.end());
  return split;
}

std::optional<std::string_view> identifierOf(const std::optional<UniformType>& type) {
  return type ? std::optional(type->identifier()) : std::nullopt;
}

// The compiled registry must say what the table in the source tree says, line for line: this
// catches a generator that drops, reorders or mangles rows.
TEST(UniformType, CompiledRegistryMatchesTheSourceTable) {
  std::ifstream table(std::filesystem::path(GALDRINE_SOURCE_DIRECTORY) / "resources" / "uniform-types.tsv");
  std::size_t rowCount = 0;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.front() == '#') continue;
    const auto columns = fields(line, '\t');
    const auto type = UniformType::fromIdentifier(columns.at(0));
    ASSERT_TRUE(columns.size() == 3 && type.has_value()) << line;
    const auto tags = columns[2] == "-" ? std::vector<std::string>{} : fields(columns[2], ',');
    EXPECT_EQ(type->identifier(), columns[0]);
    EXPECT_EQ(std::pair(type->conformsToImage(), type->conformsToMovie()),
              std::pair(columns[1] == "image", columns[1] == "movie"))
        << line;
    EXPECT_EQ(std::vector<std::string>(type->fileNameExtensionTags().begin(), type->fileNameExtensionTags().end()),
              tags);
    ++rowCount;
  }
  EXPECT_GT(rowCount, 30u);
}

// An extension finds the first row that lists it, in full case folding; identifiers compare in
// ASCII case only; nothing else resolves.
TEST(UniformType, LookupsFindTheFirstListedTypeIgnoringCase) {
  EXPECT_EQ(identifierOf(UniformType::fromFileNameExtension("WEBP")), "public.webp");           // listed twice
  EXPECT_EQ(identifierOf(UniformType::fromFileNameExtension("m\u212Av")), "org.matroska.mkv");  // Kelvin sign
  EXPECT_EQ(identifierOf(UniformType::fromIdentifier("Public.JPEG")), "public.jpeg");
  EXPECT_EQ(identifierOf(UniformType::fromIdentifier("PUBL\u0130C.jpeg")), std::nullopt);
  for (const std::string_view unknown : {"", ".jpg", "jpg ", "\xff\xfe"}) {
    EXPECT_EQ(identifierOf(UniformType::fromFileNameExtension(unknown)), std::nullopt) << unknown;
  }
}

}  // namespace

}  // namespace galdrine::platform
