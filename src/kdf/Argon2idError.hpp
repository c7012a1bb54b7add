#pragma once
// Argon2idError is how parameter validation and key derivation fail. Cases stand in the
// order of their contract; the first four carry the numbers of the check that failed.

#include <cstdint>

namespace galdrine::kdf {

struct Argon2idError {
  enum class Code : std::uint8_t {
    invalidSaltLength,            // expected, actual
    operationsLimitOutOfRange,    // minimumOperationsLimit, maximumOperationsLimit, actualOperationsLimit
    memoryLimitOutOfRange,        // minimum, maximum, actual
    memoryLimitMustBeKiBAligned,  // actual
    emptyPassphrase,
    derivationFailed,
  };

  Code code;
  // Byte counts of the salt and memory cases; zero where the case has none.
  std::int64_t expected = 0;
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  std::int64_t actual = 0;
  // The operations limit is unsigned 64-bit, so its case keeps its numbers in fields of that type.
  std::uint64_t minimumOperationsLimit = 0;
  std::uint64_t maximumOperationsLimit = 0;
  std::uint64_t actualOperationsLimit = 0;

  [[nodiscard]] static constexpr Argon2idError invalidSaltLength(std::int64_t expected, std::int64_t actual) {
    return {.code = Code::invalidSaltLength, .expected = expected, .actual = actual};
  }
  [[nodiscard]] static constexpr Argon2idError operationsLimitOutOfRange(std::uint64_t minimum, std::uint64_t maximum,
                                                                         std::uint64_t actual) {
    return {.code = Code::operationsLimitOutOfRange,
            .minimumOperationsLimit = minimum,
            .maximumOperationsLimit = maximum,
            .actualOperationsLimit = actual};
  }
  [[nodiscard]] static constexpr Argon2idError memoryLimitOutOfRange(std::int64_t minimum, std::int64_t maximum,
                                                                     std::int64_t actual) {
    return {.code = Code::memoryLimitOutOfRange, .minimum = minimum, .maximum = maximum, .actual = actual};
  }
  [[nodiscard]] static constexpr Argon2idError memoryLimitMustBeKiBAligned(std::int64_t actual) {
    return {.code = Code::memoryLimitMustBeKiBAligned, .actual = actual};
  }
  [[nodiscard]] static constexpr Argon2idError emptyPassphrase() { return {.code = Code::emptyPassphrase}; }
  [[nodiscard]] static constexpr Argon2idError derivationFailed() { return {.code = Code::derivationFailed}; }

  friend constexpr bool operator==(const Argon2idError&, const Argon2idError&) = default;
};

}  // namespace galdrine::kdf
