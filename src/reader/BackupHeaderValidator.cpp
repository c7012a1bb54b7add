#include "reader/BackupHeaderValidator.hpp"

namespace galdrine::reader {

namespace BackupHeaderValidator {

std::expected<format::BackupFormatHeaderV1, format::BackupFormatHeaderV1Failure> validate(ByteView data) {
  return format::BackupFormatHeaderV1::decode(data);
}

}  // namespace BackupHeaderValidator

}  // namespace galdrine::reader
