#pragma once
// hexBytes turns a lower-case hexadecimal literal of a test vector into bytes; spaces are
// ignored so that long published vectors can be typed in their printed blocks. A malformed
// literal fails the running test instead of passing silently with empty bytes.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/Bytes.hpp"

namespace galdrine::testsupport {

[[nodiscard]] inline Bytes hexBytes(std::string_view text) {
  std::string digits;
  for (const char character : text) {
    if (character != ' ') digits.push_back(character);
  }
  auto bytes = ByteText::parseLowerHex(digits);
  if (!bytes) {
    ADD_FAILURE() << "malformed hexadecimal literal: " << text;
    return {};
  }
  return *bytes;
}

}  // namespace galdrine::testsupport
