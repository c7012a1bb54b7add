#pragma once
// JSONText writes the system's JSON documents, the tool's and the export's alike, in
// their one text form: keys sorted by their bytes at every level, pretty printed with two
// spaces of indentation, "/" never escaped, characters above U+007F written as they are, and
// control characters escaped as JSON requires. No line feed follows the closing bracket; a
// writer that wants one adds it.
//
// A key is written only if the document holds it, so an absent optional is left out by not
// putting it in; a null is never written unless the document holds one.

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <expected>
#include <string>

namespace galdrine::platform {

// JSONTextError: a document could not be written as text. The only cause is a string in it
// that is not valid UTF-8, which is refused rather than altered.
enum class JSONTextError : std::uint8_t {
  invalidUTF8,
};

namespace JSONText {

// encoded fails with invalidUTF8, and gives no text, if any key or string of `document` is not
// valid UTF-8.
[[nodiscard]] std::expected<std::string, JSONTextError> encoded(const nlohmann::json& document);

}  // namespace JSONText

}  // namespace galdrine::platform
