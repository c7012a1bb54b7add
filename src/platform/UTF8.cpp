#include "platform/UTF8.hpp"

namespace galdrine::platform {

namespace {

bool isContinuation(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }

// sequenceLength gives the length of the sequence that `lead` opens and the smallest scalar
// it may encode, or 0 for a byte that cannot open a sequence.
std::size_t sequenceLength(std::uint8_t lead, std::uint32_t& smallestScalar) {
  if (lead < 0x80) {
    smallestScalar = 0;
    return 1;
  }
  if ((lead & 0xE0) == 0xC0) {
    smallestScalar = 0x80;
    return 2;
  }
  if ((lead & 0xF0) == 0xE0) {
    smallestScalar = 0x800;
    return 3;
  }
  if ((lead & 0xF8) == 0xF0) {
    smallestScalar = 0x10000;
    return 4;
  }
  return 0;
}

}  // namespace

namespace UTF8 {

bool isValid(ByteView bytes) {
  std::size_t index = 0;
  while (index < bytes.size()) {
    std::uint32_t smallestScalar = 0;
    const std::size_t length = sequenceLength(bytes[index], smallestScalar);
    if (length == 0 || length > bytes.size() - index) return false;
    std::uint32_t scalar = length == 1 ? bytes[index] : (bytes[index] & (0x7Fu >> length));
    for (std::size_t offset = 1; offset < length; ++offset) {
      if (!isContinuation(bytes[index + offset])) return false;
      scalar = (scalar << 6) | (bytes[index + offset] & 0x3Fu);
    }
    if (scalar < smallestScalar || scalar > 0x10FFFF || (scalar >= 0xD800 && scalar <= 0xDFFF)) return false;
    index += length;
  }
  return true;
}

}  // namespace UTF8

}  // namespace galdrine::platform
