#include "platform/Random.hpp"

#include <openssl/err.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <climits>

#include "platform/Bytes.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::platform {

namespace Random {

std::int32_t fill(std::span<std::uint8_t> bytes) {
  std::size_t offset = 0;
  while (offset < bytes.size()) {
    const std::size_t pieceByteCount = std::min<std::size_t>(bytes.size() - offset, INT_MAX);
    if (RAND_bytes(bytes.data() + offset, static_cast<int>(pieceByteCount)) != 1) {
      ERR_clear_error();
      SecureMemory::wipe(bytes);
      return -1;
    }
    offset += pieceByteCount;
  }
  return 0;
}

std::optional<std::string> lowercaseUUIDText() {
  std::array<std::uint8_t, 16> bytes{};
  if (fill(bytes) != 0) return std::nullopt;
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
  const std::string hex = ByteText::lowerHex(bytes);
  return hex.substr(0, 8) + "-" + hex.substr(8, 4) + "-" + hex.substr(12, 4) + "-" + hex.substr(16, 4) + "-" +
         hex.substr(20, 12);
}

}  // namespace Random

}  // namespace galdrine::platform
