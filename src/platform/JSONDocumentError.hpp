#pragma once
// JSONDocumentError is how reading a keyed JSON document fails before any rule of the
// value itself is applied. It names what went wrong and nothing else: no key, no path, no text.

#include <cstdint>

namespace galdrine::platform {

enum class JSONDocumentError : std::uint8_t {
  keyNotFound,    // a required key is absent
  valueNotFound,  // a required key holds null
  typeMismatch,   // a value of the wrong JSON type, or a document that is not an object
  dataCorrupted,  // a number that the field's type cannot hold exactly (negative, fractional, too large)
};

}  // namespace galdrine::platform
