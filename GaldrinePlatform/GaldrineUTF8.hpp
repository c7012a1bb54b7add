#pragma once
// Strict UTF-8: shortest forms only, no surrogates, nothing above U+10FFFF.

#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineUTF8 {

[[nodiscard]] bool isValid(ByteView bytes);

[[nodiscard]] inline bool isValid(std::string_view text) { return isValid(GaldrineByteText::view(text)); }

}  // namespace GaldrineUTF8
