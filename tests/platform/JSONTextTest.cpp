#include "platform/JSONText.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace galdrine::platform {

// The export documents' tests pin the whole text form (sorted keys, indentation, "/" and
// non-ASCII text as they are); here is what those documents never hold: control characters are
// escaped, and a string that is not UTF-8 gives no text at all.
TEST(JSONText, EscapesControlCharactersAndRefusesInvalidUTF8) {
  using JSON = nlohmann::json;
  EXPECT_EQ(JSONText::encoded(JSON{{"b", "a\nb\x01"}, {"a", "/\xC3\x84"}}),
            "{\n  \"a\": \"/\xC3\x84\",\n  \"b\": \"a\\nb\\u0001\"\n}");
  EXPECT_EQ(JSONText::encoded(JSON{{"b", "\xC3"}}), std::unexpected(JSONTextError::invalidUTF8));
}

}  // namespace galdrine::platform
