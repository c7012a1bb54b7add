#pragma once
// BackupHeaderValidator turns the bytes of format-header.cbor into a header record. It
// adds no check of its own: the header's decoding decides, and its failure is passed on as it
// came, so every reader of the engine judges a header in exactly one way.

#include <expected>

#include "format/header/BackupFormatHeaderV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::reader {

namespace BackupHeaderValidator {

// validate is BackupFormatHeaderV1::decode of `data`; nothing is kept of a refused header.
[[nodiscard]] std::expected<format::BackupFormatHeaderV1, format::BackupFormatHeaderV1Failure> validate(ByteView data);

}  // namespace BackupHeaderValidator

}  // namespace galdrine::reader
