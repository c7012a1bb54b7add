#include "GaldrineRecoveryTool/LiveBackendErrorMapping.hpp"

namespace LiveBackendErrorMapping {

RecoveryToolError mapInspectionError(const GaldrineRecoveryKeyMnemonicV1Error&) { return RecoveryToolError::invalidCredential; }

RecoveryToolError mapInspectionError(GaldrineRecoveryPackageInspectorV1Error error) {
  switch (error) {
    case GaldrineRecoveryPackageInspectorV1Error::invalidPackage: return RecoveryToolError::invalidPackage;
    case GaldrineRecoveryPackageInspectorV1Error::unlockFailed: return RecoveryToolError::unlockFailed;
    case GaldrineRecoveryPackageInspectorV1Error::packageUnavailable: return RecoveryToolError::packageUnavailable;
    case GaldrineRecoveryPackageInspectorV1Error::resourceLimitExceeded: return RecoveryToolError::resourceLimitExceeded;
    case GaldrineRecoveryPackageInspectorV1Error::integrityFailure: return RecoveryToolError::integrityFailure;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError mapInspectionError(RecoveryToolBackendError error) {
  switch (error) {
    case RecoveryToolBackendError::invalidCredential: return RecoveryToolError::invalidCredential;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError mapExportError(GaldrineRecoveryExporterV1Error error) {
  using Error = GaldrineRecoveryExporterV1Error;
  switch (error) {
    case Error::invalidPackage: return RecoveryToolError::invalidPackage;
    case Error::unlockFailed: return RecoveryToolError::unlockFailed;
    case Error::snapshotNotFound: return RecoveryToolError::snapshotSelectionNotFound;
    case Error::destinationExists: return RecoveryToolError::destinationExists;
    case Error::destinationUnavailable: return RecoveryToolError::destinationUnavailable;
    case Error::resourceLimitExceeded: return RecoveryToolError::resourceLimitExceeded;
    case Error::integrityFailure: return RecoveryToolError::integrityFailure;
    case Error::outputWriteFailed: return RecoveryToolError::outputWriteFailed;
  }
  return RecoveryToolError::integrityFailure;
}

}  // namespace LiveBackendErrorMapping
