#include <gtest/gtest.h>

#include <optional>
#include <string_view>

#include "platform/UniformType.hpp"

namespace galdrine::platform {

namespace {

std::optional<std::string_view> identifierFor(std::string_view extension) {
  const auto type = UniformType::fromFileNameExtension(extension);
  if (!type) return std::nullopt;
  return type->identifier();
}

TEST(UniformTypeExtension, FindsTheFirstTypeListingTheTagIgnoringCase) {
  const struct {
    std::string_view extension;
    std::optional<std::string_view> identifier;
  } cases[] = {
      {"jpg", "public.jpeg"},
      {"JPG", "public.jpeg"},
      {"Jpe", "public.jpeg"},
      {"mov", "com.apple.quicktime-movie"},
      {"MOV", "com.apple.quicktime-movie"},
      {"avi", "public.avi"},
      {"png", "public.png"},
      {"webp", "public.webp"},             // listed twice: the earlier row wins
      {"m\u212Av", "org.matroska.mkv"},    // the Kelvin sign folds to "k"
      {"", std::nullopt},
      {"txt", std::nullopt},
      {"jpg ", std::nullopt},
      {".jpg", std::nullopt},
      {"\xff\xfe", std::nullopt},
  };
  for (const auto& testCase : cases) {
    EXPECT_EQ(identifierFor(testCase.extension), testCase.identifier) << testCase.extension;
  }
}

// Every tag of every listed type leads back to a type that lists it: no tag is unreachable
// except through an earlier row that claims it too.
TEST(UniformTypeExtension, EveryTagOfAMediaTypeResolvesToAMediaType) {
  for (const std::string_view identifier : {"public.jpeg", "public.heic", "com.apple.quicktime-movie", "public.mpeg-4"}) {
    const auto type = UniformType::fromIdentifier(identifier);
    ASSERT_TRUE(type);
    for (const std::string_view tag : type->fileNameExtensionTags()) {
      const auto found = UniformType::fromFileNameExtension(tag);
      ASSERT_TRUE(found) << tag;
      EXPECT_EQ(*found, *type) << tag;
    }
  }
}

}  // namespace

}  // namespace galdrine::platform
