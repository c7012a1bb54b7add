#pragma once
// inspectorError is the inspector's one table from what fails beneath it to its own error: its
// own case stays, the commit graph's record limit is a resource limit, and anything else (a
// frame that does not open, a bad record, a graph fault, a package directory refused) is an
// integrity failure. Every call site of a lower layer maps through it, so the lower reason
// stops there.

#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"

[[nodiscard]] constexpr GaldrineRecoveryPackageInspectorV1Error inspectorError(GaldrineRecoveryPackageInspectorV1Error error) {
  return error;
}

[[nodiscard]] constexpr GaldrineRecoveryPackageInspectorV1Error inspectorError(GaldrineBackupCommitGraphV1Error error) {
  return error == GaldrineBackupCommitGraphV1Error::recordLimitExceeded
             ? GaldrineRecoveryPackageInspectorV1Error::resourceLimitExceeded
             : GaldrineRecoveryPackageInspectorV1Error::integrityFailure;
}

template <typename LowerError>
[[nodiscard]] constexpr GaldrineRecoveryPackageInspectorV1Error inspectorError(const LowerError&) {
  return GaldrineRecoveryPackageInspectorV1Error::integrityFailure;
}
