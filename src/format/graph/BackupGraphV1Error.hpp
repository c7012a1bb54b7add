#pragma once
// BackupGraphV1Error is the one failure of the backup graph records: building them,
// their canonical forms, sealing and opening. Cases stand in contract order. Damage to the
// bytes of an artifact that already has a reference always reads as verificationFailed, so
// that damage and tampering look alike; the other cases describe authentic content.

#include <cstdint>

namespace galdrine::format {

enum class BackupGraphV1Error : std::uint8_t {
  invalidIdentifier,
  invalidDigest,
  invalidCount,
  invalidReference,
  invalidRecordSet,
  invalidSectionSet,
  invalidTimestamp,
  invalidKey,
  unsupportedCompression,
  malformedArtifact,
  verificationFailed,
};

}  // namespace galdrine::format
