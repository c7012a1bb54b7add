#include "platform/JSONText.hpp"

#include <nlohmann/json.hpp>

namespace galdrine::platform {

namespace JSONText {

// nlohmann's default object is a std::map, so keys come out sorted by their bytes at every
// level; it never escapes "/", and without ensure_ascii it leaves non-ASCII text as it is.
std::expected<std::string, JSONTextError> encoded(const nlohmann::json& document) {
  constexpr int indentation = 2;
  constexpr bool ensureASCII = false;
  try {
    // Strict: a text that is not UTF-8 fails the document instead of being altered.
    return document.dump(indentation, ' ', ensureASCII, nlohmann::json::error_handler_t::strict);
  } catch (const nlohmann::json::exception&) {
    return std::unexpected(JSONTextError::invalidUTF8);
  }
}

}  // namespace JSONText

}  // namespace galdrine::platform
