#pragma once
// JSONTextError: a JSON document could not be written as text. The only cause is a
// string in it that is not valid UTF-8, which is refused rather than altered.

#include <cstdint>

namespace galdrine::platform {

enum class JSONTextError : std::uint8_t {
  invalidUTF8,
};

}  // namespace galdrine::platform
