#pragma once
// RecoveryPackageInspectorError is the one failure of an inspection, shared by every step of
// it. Cases stand in contract order and carry nothing: no path, file name, identifier or lower
// reason leaves the inspector. Damage and tampering read alike, and so do a wrong credential
// and a damaged envelope.

#include <cstdint>

#include "format/graph/BackupCommitGraph.hpp"

namespace galdrine::recovery {

enum class RecoveryPackageInspectorError : std::uint8_t {
  invalidPackage,         // the package or its envelope file cannot be opened or does not bind
  unlockFailed,           // the factor did not open the bpmk
  packageUnavailable,     // a directory or file exists but could not be listed or read
  resourceLimitExceeded,  // a count or size limit was reached
  integrityFailure,       // authenticated data disagrees, or a required file is absent or malformed
};

// inspectorError is the inspector's one table from what fails beneath it to its own error: its
// own case stays, the commit graph's record limit is a resource limit, and anything else (a
// frame that does not open, a bad record, a graph fault, a package directory refused) is an
// integrity failure. Every call site of a lower layer maps through it, so the lower reason
// stops there.
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
