#include "GaldrineRecoveryCore/GaldrineBackupHeaderValidator.hpp"

namespace GaldrineBackupHeaderValidator {

std::expected<GaldrineBackupFormatHeaderV1, GaldrineBackupFormatHeaderV1Failure> validate(ByteView data) {
  return GaldrineBackupFormatHeaderV1::decode(data);
}

}  // namespace GaldrineBackupHeaderValidator
