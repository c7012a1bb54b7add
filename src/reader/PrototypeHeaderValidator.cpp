#include "reader/PrototypeHeaderValidator.hpp"

namespace galdrine::reader {

namespace PrototypeHeaderValidator {

std::expected<void, PrototypeHeaderValidationError> validate(const format::PrototypeFormatHeader& header) {
  if (header.magic != format::PrototypeFormatHeader::expectedMagic) {
    return std::unexpected(PrototypeHeaderValidationError::invalidMagic());
  }
  if (header.formatVersion != 0) {
    return std::unexpected(PrototypeHeaderValidationError::unsupportedVersion(header.formatVersion));
  }
  return {};
}

}  // namespace PrototypeHeaderValidator

}  // namespace galdrine::reader
