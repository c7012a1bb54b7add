#include "GaldrineRecoveryCore/GaldrinePrototypeHeaderValidator.hpp"

namespace GaldrinePrototypeHeaderValidator {

std::expected<void, GaldrinePrototypeHeaderValidationError> validate(const GaldrinePrototypeFormatHeader& header) {
  if (header.magic != GaldrinePrototypeFormatHeader::expectedMagic) {
    return std::unexpected(GaldrinePrototypeHeaderValidationError::invalidMagic());
  }
  if (header.formatVersion != 0) {
    return std::unexpected(GaldrinePrototypeHeaderValidationError::unsupportedVersion(header.formatVersion));
  }
  return {};
}

}  // namespace GaldrinePrototypeHeaderValidator
