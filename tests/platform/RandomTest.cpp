#include "platform/Random.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace galdrine::platform {

// The version and variant bits are set over random bytes, and the text has the standard form.
TEST(Random, UUIDTextIsLowerCaseVersion4WithTheStandardVariant) {
  const std::regex form("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
  for (int attempt = 0; attempt < 64; ++attempt) {
    const auto text = Random::lowercaseUUIDText();
    ASSERT_TRUE(text.has_value());
    EXPECT_TRUE(std::regex_match(*text, form)) << *text;
  }
  EXPECT_NE(Random::lowercaseUUIDText(), Random::lowercaseUUIDText());
}

}  // namespace galdrine::platform
