#pragma once
// Fixed-width byte strings of the backup format held by value: a record that has checked a
// length keeps the bytes in an array, so that neither a heap block nor a second length check
// is needed afterwards.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

using BackupIdentifierV1 = std::array<std::uint8_t, 16>;

namespace FixedBytes {

// from copies `bytes` into an array of exactly `ByteCount` bytes, or gives nothing for any
// other length.
template <std::size_t ByteCount>
[[nodiscard]] std::optional<std::array<std::uint8_t, ByteCount>> from(ByteView bytes) {
  if (bytes.size() != ByteCount) return std::nullopt;
  std::array<std::uint8_t, ByteCount> fixed{};
  std::ranges::copy(bytes, fixed.begin());
  return fixed;
}

[[nodiscard]] inline std::optional<BackupIdentifierV1> identifier(ByteView bytes) { return from<16>(bytes); }

[[nodiscard]] inline std::optional<platform::SHA256Digest> digest(ByteView bytes) { return from<32>(bytes); }

}  // namespace FixedBytes

}  // namespace galdrine::format
