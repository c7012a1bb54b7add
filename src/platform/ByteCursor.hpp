#pragma once
// ByteCursor hands out bytes of a hostile input and cannot step past its end: every
// read either yields what was asked for or nothing, and the position only moves on success.

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

class ByteCursor {
 public:
  explicit ByteCursor(ByteView input) : input_(input) {}

  [[nodiscard]] std::size_t offset() const { return offset_; }
  [[nodiscard]] std::size_t remainingByteCount() const { return input_.size() - offset_; }
  [[nodiscard]] bool atEnd() const { return offset_ == input_.size(); }
  // consumedSince gives the bytes read from `start` up to the present position.
  [[nodiscard]] ByteView consumedSince(std::size_t start) const { return input_.subspan(start, offset_ - start); }

  [[nodiscard]] std::optional<ByteView> take(std::size_t byteCount) {
    if (byteCount > remainingByteCount()) return std::nullopt;
    const ByteView taken = input_.subspan(offset_, byteCount);
    offset_ += byteCount;
    return taken;
  }

  // takeBigEndian reads an unsigned integer of `byteCount` bytes (1 to 8), most significant first.
  [[nodiscard]] std::optional<std::uint64_t> takeBigEndian(std::size_t byteCount) {
    if (byteCount == 0 || byteCount > 8) return std::nullopt;
    const auto bytes = take(byteCount);
    if (!bytes) return std::nullopt;
    std::uint64_t value = 0;
    for (const std::uint8_t byte : *bytes) value = (value << 8) | byte;
    return value;
  }

 private:
  ByteView input_;
  std::size_t offset_ = 0;
};

}  // namespace galdrine::platform
