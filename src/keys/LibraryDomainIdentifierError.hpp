#pragma once

#include <cstdint>

namespace galdrine::keys {

struct LibraryDomainIdentifierError {
  enum class Code : std::uint8_t { invalidByteCount };

  Code code;
  std::int64_t expected = 0;
  std::int64_t actual = 0;

  static constexpr LibraryDomainIdentifierError invalidByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidByteCount, expected, actual};
  }

  friend constexpr bool operator==(const LibraryDomainIdentifierError&,
                                   const LibraryDomainIdentifierError&) = default;
};

}  // namespace galdrine::keys
