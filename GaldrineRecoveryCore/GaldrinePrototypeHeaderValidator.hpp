#pragma once
// GaldrinePrototypeHeaderValidator judges the header of the earlier draft format, which only
// fixtures still carry.

#include <expected>

#include "GaldrineCore/GaldrinePrototypeFormatHeader.hpp"
#include "GaldrineRecoveryCore/GaldrinePrototypeHeaderValidationError.hpp"

namespace GaldrinePrototypeHeaderValidator {

// validate checks the magic first (invalidMagic unless it is "GALDRINE-DRAFT" exactly), then
// the version (unsupportedVersion of it unless it is 0), so a header wrong in both is
// invalidMagic.
[[nodiscard]] std::expected<void, GaldrinePrototypeHeaderValidationError> validate(const GaldrinePrototypeFormatHeader& header);

}  // namespace GaldrinePrototypeHeaderValidator
