#pragma once
// GaldrineBackupManifestRecordV1Error is the one failure of the manifest records, their codec
// and the manifest's semantic validator. Cases stand in contract order; the last five only
// arise when records are checked together.

#include <cstdint>

enum class GaldrineBackupManifestRecordV1Error : std::uint8_t {
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
