#pragma once
// BackupManifestRecordV1Error is the one failure of the manifest records, their codec
// and the manifest's semantic validator. Cases stand in contract order; the last five only
// arise when records are checked together.

#include <cstdint>

namespace galdrine::format {

enum class BackupManifestRecordV1Error : std::uint8_t {
  invalidIdentifier,
  invalidDigest,
  invalidText,
  invalidValue,
  invalidResourceLayout,
  invalidRecordKind,
  invalidKey,
  malformedRecord,
  verificationFailed,
  duplicateRecord,
  missingReference,
  conflictingReference,
  invalidRelationship,
  arithmeticOverflow,
};

}  // namespace galdrine::format
