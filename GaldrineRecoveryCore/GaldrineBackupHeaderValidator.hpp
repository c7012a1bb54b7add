#pragma once
// GaldrineBackupHeaderValidator turns the bytes of format-header.cbor into a header record. It
// adds no check of its own: the header's decoding decides, and its failure is passed on as it
// came, so every reader of the engine judges a header in exactly one way.

#include <expected>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineBackupHeaderValidator {

// validate is GaldrineBackupFormatHeaderV1::decode of `data`; nothing is kept of a refused header.
[[nodiscard]] std::expected<GaldrineBackupFormatHeaderV1, GaldrineBackupFormatHeaderV1Failure> validate(ByteView data);

}  // namespace GaldrineBackupHeaderValidator
