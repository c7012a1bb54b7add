#pragma once
// PrototypeHeaderValidator judges the header of the earlier draft format, which only
// fixtures still carry.

#include <expected>

#include "format/header/PrototypeFormatHeader.hpp"
#include "reader/PrototypeHeaderValidationError.hpp"

namespace galdrine::reader {

namespace PrototypeHeaderValidator {

// validate checks the magic first (invalidMagic unless it is "GALDRINE-DRAFT" exactly), then
// the version (unsupportedVersion of it unless it is 0), so a header wrong in both is
// invalidMagic.
[[nodiscard]] std::expected<void, PrototypeHeaderValidationError> validate(const format::PrototypeFormatHeader& header);

}  // namespace PrototypeHeaderValidator

}  // namespace galdrine::reader
