#pragma once
// LibraryDomainIdentifier names one library's key domain: exactly 16 bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "keys/LibraryDomainIdentifierError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::keys {

class LibraryDomainIdentifier {
 public:
  static constexpr std::size_t byteCount = 16;

  // make copies 16 bytes; another length is invalidByteCount(16, length).
  [[nodiscard]] static std::expected<LibraryDomainIdentifier, LibraryDomainIdentifierError> make(
      ByteView bytes);

  [[nodiscard]] ByteView bytes() const { return bytes_; }

  friend bool operator==(const LibraryDomainIdentifier&, const LibraryDomainIdentifier&) = default;

 private:
  LibraryDomainIdentifier() = default;
  std::array<std::uint8_t, byteCount> bytes_{};
};

}  // namespace galdrine::keys
