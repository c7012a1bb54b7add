#include "GaldrinePlatform/GaldrineJSONText.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using JSON = nlohmann::json;

TEST(GaldrineJSONText, SortsKeysAtEveryLevelAndLeavesSlashesAndNonASCIIAsTheyAre) {
  const JSON document = {{"zeta", {{"b", 1}, {"a", "All Items/Ä.jpg"}}}, {"alpha", JSON::array({JSON::object({{"y", true}, {"x", -2}})})}};
  const auto text = GaldrineJSONText::encoded(document);
  ASSERT_TRUE(text.has_value());
  EXPECT_EQ(*text,
            "{\n"
            "  \"alpha\": [\n"
            "    {\n"
            "      \"x\": -2,\n"
            "      \"y\": true\n"
            "    }\n"
            "  ],\n"
            "  \"zeta\": {\n"
            "    \"a\": \"All Items/\xC3\x84.jpg\",\n"
            "    \"b\": 1\n"
            "  }\n"
            "}");
}

TEST(GaldrineJSONText, EscapesControlCharactersAndRefusesInvalidUTF8) {
  const auto escaped = GaldrineJSONText::encoded(JSON{{"name", std::string("a\nb\x01")}});
  ASSERT_TRUE(escaped.has_value());
  EXPECT_EQ(*escaped, "{\n  \"name\": \"a\\nb\\u0001\"\n}");

  const auto invalid = GaldrineJSONText::encoded(JSON{{"name", std::string("\xC3")}});
  ASSERT_FALSE(invalid.has_value());
  EXPECT_EQ(invalid.error(), GaldrineJSONTextError::invalidUTF8);
}

}  // namespace
