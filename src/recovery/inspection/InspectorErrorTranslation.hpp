#pragma once
// inspectorError is the inspector's one table from what fails beneath it to its own error: its
// own case stays, the commit graph's record limit is a resource limit, and anything else (a
// frame that does not open, a bad record, a graph fault, a package directory refused) is an
// integrity failure. Every call site of a lower layer maps through it, so the lower reason
// stops there.

#include "format/graph/BackupCommitGraphError.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

[[nodiscard]] constexpr RecoveryPackageInspectorError inspectorError(RecoveryPackageInspectorError error) {
  return error;
}

[[nodiscard]] constexpr RecoveryPackageInspectorError inspectorError(format::BackupCommitGraphError error) {
  return error == format::BackupCommitGraphError::recordLimitExceeded
             ? RecoveryPackageInspectorError::resourceLimitExceeded
             : RecoveryPackageInspectorError::integrityFailure;
}

template <typename LowerError>
[[nodiscard]] constexpr RecoveryPackageInspectorError inspectorError(const LowerError&) {
  return RecoveryPackageInspectorError::integrityFailure;
}

}  // namespace galdrine::recovery
