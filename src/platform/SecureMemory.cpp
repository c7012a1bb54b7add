#include "platform/SecureMemory.hpp"

#include <sodium.h>

namespace galdrine::platform {

namespace SecureMemory {

void wipe(std::span<std::uint8_t> bytes) noexcept {
  if (bytes.empty()) return;
  // sodium_memzero is a store the compiler may not drop, unlike a plain memset before free.
  sodium_memzero(bytes.data(), bytes.size());
}

void wipe(std::string& text) noexcept {
  if (text.empty()) return;
  sodium_memzero(text.data(), text.size());
}

}  // namespace SecureMemory

}  // namespace galdrine::platform
