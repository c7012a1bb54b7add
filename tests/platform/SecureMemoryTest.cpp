#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "platform/SecureMemory.hpp"

namespace galdrine::platform {

namespace {

Bytes counting(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return bytes;
}

bool allZero(ByteView bytes) {
  return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

TEST(SecureMemory, WipesEveryContainerWholeAndKeepsItsLength) {
  Bytes key = counting(32);
  SecureMemory::wipe(key);
  EXPECT_EQ(key, Bytes(32, 0));

  std::array<std::uint8_t, 16> fixed{};
  std::ranges::fill(fixed, 0x5A);
  SecureMemory::wipe(fixed);
  EXPECT_TRUE(allZero(fixed));

  std::string shortCredential = "pass";                                 // held inside the string object
  std::string longCredential = "a passphrase too long for the object";  // held on the heap
  SecureMemory::wipe(shortCredential);
  SecureMemory::wipe(longCredential);
  EXPECT_EQ(shortCredential, std::string(4, '\0'));
  EXPECT_EQ(longCredential, std::string(36, '\0'));
}

TEST(SecureMemory, EmptyValuesStayEmpty) {
  Bytes empty;
  std::string emptyText;
  SecureMemory::wipe(empty);
  SecureMemory::wipe(emptyText);
  SecureMemory::wipe(std::span<std::uint8_t>{});
  EXPECT_TRUE(empty.empty());
  EXPECT_TRUE(emptyText.empty());
}

// A sub-range is erased over its own range only, at every position and length; the bytes on
// both sides keep their values.
TEST(SecureMemory, SubRangeIsWipedOverItsOwnRangeOnly) {
  const Bytes original = counting(24);
  for (std::size_t start = 0; start <= original.size(); ++start) {
    for (std::size_t length = 0; start + length <= original.size(); ++length) {
      Bytes buffer = original;
      SecureMemory::wipe(std::span<std::uint8_t>(buffer).subspan(start, length));
      for (std::size_t index = 0; index < buffer.size(); ++index) {
        const bool inside = index >= start && index < start + length;
        ASSERT_EQ(buffer[index], inside ? 0 : original[index]) << start << "+" << length << " at " << index;
      }
    }
  }
}

TEST(SecureMemory, ACopyKeepsItsBytesWhenTheOriginalIsWiped) {
  Bytes original = counting(32);
  const Bytes copy = original;
  SecureMemory::wipe(original);
  EXPECT_TRUE(allZero(original));
  EXPECT_EQ(copy, counting(32));
}

}  // namespace

}  // namespace galdrine::platform
