#pragma once
// LibraryDomainIdentifier names one library's key domain: exactly 16 bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "platform/Bytes.hpp"

namespace galdrine::keys {

struct LibraryDomainIdentifierError {
  enum class Code : std::uint8_t { invalidByteCount };

  Code code;
  std::int64_t expected = 0;
  std::int64_t actual = 0;

  static constexpr LibraryDomainIdentifierError invalidByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidByteCount, expected, actual};
  }

  friend constexpr bool operator==(const LibraryDomainIdentifierError&, const LibraryDomainIdentifierError&) = default;
};

class LibraryDomainIdentifier {
 public:
  static constexpr std::size_t byteCount = 16;

  // make copies 16 bytes; another length is invalidByteCount(16, length).
  [[nodiscard]] static std::expected<LibraryDomainIdentifier, LibraryDomainIdentifierError> make(ByteView bytes);

  [[nodiscard]] ByteView bytes() const { return bytes_; }

  friend bool operator==(const LibraryDomainIdentifier&, const LibraryDomainIdentifier&) = default;

 private:
  LibraryDomainIdentifier() = default;
  std::array<std::uint8_t, byteCount> bytes_{};
};

}  // namespace galdrine::keys
