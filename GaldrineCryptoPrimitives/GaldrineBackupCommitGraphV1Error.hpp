#pragma once
// GaldrineBackupCommitGraphV1Error: why a package's commits and heads do not form a sound
// graph. Cases stand in contract order; callers treat every one as a failed authentication.

#include <cstdint>

enum class GaldrineBackupCommitGraphV1Error : std::uint8_t {
  duplicateIdentifier,
  invalidAuthenticatedRecord,
  recordLimitExceeded,
  missingReference,
  invalidLineage,
  cyclicGraph,
};
