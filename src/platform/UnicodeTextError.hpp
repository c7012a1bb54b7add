#pragma once
// UnicodeTextError is the one failure of the Unicode text services. Text is always
// UTF-8 at their boundary; nothing is repaired or guessed.

#include <cstdint>

namespace galdrine::platform {

enum class UnicodeTextError : std::uint8_t {
  invalidUTF8,        // the input is not strict UTF-8
  textTooLong,        // the input exceeds UnicodeText::maximumUTF8ByteCount
  textServiceFailed,  // the Unicode library refused (out of memory, missing data)
};

}  // namespace galdrine::platform
