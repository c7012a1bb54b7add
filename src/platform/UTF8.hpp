#pragma once
// Strict UTF-8: shortest forms only, no surrogates, nothing above U+10FFFF.

#include "platform/Bytes.hpp"

namespace galdrine::platform {

namespace UTF8 {

[[nodiscard]] bool isValid(ByteView bytes);

[[nodiscard]] inline bool isValid(std::string_view text) { return isValid(ByteText::view(text)); }

}  // namespace UTF8

}  // namespace galdrine::platform
