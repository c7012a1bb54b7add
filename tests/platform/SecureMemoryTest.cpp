#include "platform/SecureMemory.hpp"

#include <gtest/gtest.h>

namespace galdrine::platform {

// Each holder's own storage is zeroed over exactly its range and keeps its length: a sub-range
// of a buffer, a whole byte string, and a text held inside the string object or on the heap.
TEST(SecureMemory, WipesExactlyTheGivenStorage) {
  Bytes buffer(8, 0x5A);
  SecureMemory::wipe(std::span<std::uint8_t>(buffer).subspan(2, 3));
  EXPECT_EQ(buffer, (Bytes{0x5A, 0x5A, 0, 0, 0, 0x5A, 0x5A, 0x5A}));
  SecureMemory::wipe(buffer);
  EXPECT_EQ(buffer, Bytes(8, 0));
  std::string shortCredential = "pass", longCredential = "a passphrase too long for the object";
  SecureMemory::wipe(shortCredential);
  SecureMemory::wipe(longCredential);
  EXPECT_EQ(shortCredential, std::string(4, '\0'));
  EXPECT_EQ(longCredential, std::string(36, '\0'));
}

}  // namespace galdrine::platform
