#pragma once
// PrototypeHeaderValidationError is why a draft header was refused. Cases stand in
// contract order; unsupportedVersion carries the version found.

#include <cstdint>

namespace galdrine::reader {

struct PrototypeHeaderValidationError {
  enum class Code : std::uint8_t {
    unsupportedVersion,  // payload: the version found
    invalidMagic,
  };

  Code code;
  std::int64_t version = 0;  // zero for invalidMagic

  static constexpr PrototypeHeaderValidationError unsupportedVersion(std::int64_t version) {
    return {Code::unsupportedVersion, version};
  }
  static constexpr PrototypeHeaderValidationError invalidMagic() { return {Code::invalidMagic}; }

  friend constexpr bool operator==(const PrototypeHeaderValidationError&,
                                   const PrototypeHeaderValidationError&) = default;
};

}  // namespace galdrine::reader
