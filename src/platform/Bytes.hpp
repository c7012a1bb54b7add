#pragma once
// Byte strings and the one byte order of the system.

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

namespace ByteOrder {

// precedes is the order of identifiers, sort keys and digests: unsigned bytes compared
// lexicographically, a shorter string first on a common prefix.
[[nodiscard]] inline bool precedes(ByteView left, ByteView right) {
  return std::ranges::lexicographical_compare(left, right);
}

[[nodiscard]] inline bool equal(ByteView left, ByteView right) { return std::ranges::equal(left, right); }

// Less is precedes for the maps and sets keyed by byte strings. std::less<Bytes> gives the same
// order, but GCC 12 at -O3 cannot bound the lengths inside it and warns of a memcmp past any
// object; comparing views, it sees them.
struct Less {
  [[nodiscard]] bool operator()(ByteView left, ByteView right) const { return precedes(left, right); }
};

}  // namespace ByteOrder

// Maps and sets keyed by identifiers and digests, in the byte order.
template <typename Value>
using ByteMap = std::map<Bytes, Value, ByteOrder::Less>;
using ByteSet = std::set<Bytes, ByteOrder::Less>;

namespace ByteText {

[[nodiscard]] inline Bytes bytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

[[nodiscard]] inline ByteView view(std::string_view text) {
  return ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

[[nodiscard]] inline std::string_view text(ByteView bytes) {
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// lowerHex writes two lower-case hexadecimal digits a byte, without a separator.
[[nodiscard]] inline std::string lowerHex(ByteView bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 0x0F]);
  }
  return text;
}

// parseLowerHex accepts only an even number of the digits 0-9 and a-f; anything else,
// upper case included, gives nothing.
[[nodiscard]] inline std::optional<Bytes> parseLowerHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  const auto digitValue = [](char digit) -> int {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    return -1;
  };
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t index = 0; index < text.size(); index += 2) {
    const int high = digitValue(text[index]);
    const int low = digitValue(text[index + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>((high << 4) | low));
  }
  return bytes;
}

}  // namespace ByteText

}  // namespace galdrine
