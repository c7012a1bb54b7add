#pragma once
// SecureMemory is the one place where key bytes and credentials are erased. Every
// holder of secret bytes wipes its own value on every way out, success and failure alike.
// A wipe zeroes the value's whole range, keeps its length, cannot fail, and never reaches
// another value: C++ containers never share storage.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

namespace SecureMemory {

// wipe zeroes exactly the given range; a sub-range of a larger buffer stays a sub-range.
void wipe(std::span<std::uint8_t> bytes) noexcept;

inline void wipe(Bytes& bytes) noexcept { wipe(std::span<std::uint8_t>(bytes)); }

void wipe(std::string& text) noexcept;

template <std::size_t ByteCount>
void wipe(std::array<std::uint8_t, ByteCount>& bytes) noexcept {
  wipe(std::span<std::uint8_t>(bytes));
}

}  // namespace SecureMemory

}  // namespace galdrine::platform
