#include "platform/JSONText.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace galdrine::platform {

namespace {

using JSON = nlohmann::json;

TEST(JSONText, SortsKeysAtEveryLevelAndLeavesSlashesAndNonASCIIAsTheyAre) {
  const JSON document = {{"zeta", {{"b", 1}, {"a", "All Items/Ä.jpg"}}}, {"alpha", JSON::array({JSON::object({{"y", true}, {"x", -2}})})}};
  const auto text = JSONText::encoded(document);
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

TEST(JSONText, EscapesControlCharactersAndRefusesInvalidUTF8) {
  const auto escaped = JSONText::encoded(JSON{{"name", std::string("a\nb\x01")}});
  ASSERT_TRUE(escaped.has_value());
  EXPECT_EQ(*escaped, "{\n  \"name\": \"a\\nb\\u0001\"\n}");

  const auto invalid = JSONText::encoded(JSON{{"name", std::string("\xC3")}});
  ASSERT_FALSE(invalid.has_value());
  EXPECT_EQ(invalid.error(), JSONTextError::invalidUTF8);
}

}  // namespace

}  // namespace galdrine::platform
