#pragma once
// BackupCommitGraphError: why a package's commits and heads do not form a sound
// graph. Cases stand in contract order; callers treat every one as a failed authentication.

#include <cstdint>

namespace galdrine::format {

enum class BackupCommitGraphError : std::uint8_t {
  duplicateIdentifier,
  invalidAuthenticatedRecord,
  recordLimitExceeded,
  missingReference,
  invalidLineage,
  cyclicGraph,
};

}  // namespace galdrine::format
