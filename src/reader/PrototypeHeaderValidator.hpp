#pragma once
// PrototypeHeaderValidator judges the header of the earlier draft format, which only
// fixtures still carry.

#include <cstdint>
#include <expected>

#include "format/header/PrototypeFormatHeader.hpp"

namespace galdrine::reader {

// PrototypeHeaderValidationError is why a draft header was refused. Cases stand in contract
// order; unsupportedVersion carries the version found.
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

namespace PrototypeHeaderValidator {

// validate checks the magic first (invalidMagic unless it is "GALDRINE-DRAFT" exactly), then
// the version (unsupportedVersion of it unless it is 0), so a header wrong in both is
// invalidMagic.
[[nodiscard]] std::expected<void, PrototypeHeaderValidationError> validate(const format::PrototypeFormatHeader& header);

}  // namespace PrototypeHeaderValidator

}  // namespace galdrine::reader
