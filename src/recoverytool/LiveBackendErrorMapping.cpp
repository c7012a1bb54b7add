#include "recoverytool/LiveBackendErrorMapping.hpp"

namespace galdrine::recoverytool {

namespace LiveBackendErrorMapping {

RecoveryToolError mapInspectionError(const keys::RecoveryKeyMnemonicV1Error&) { return RecoveryToolError::invalidCredential; }

RecoveryToolError mapInspectionError(recovery::RecoveryPackageInspectorError error) {
  switch (error) {
    case recovery::RecoveryPackageInspectorError::invalidPackage: return RecoveryToolError::invalidPackage;
    case recovery::RecoveryPackageInspectorError::unlockFailed: return RecoveryToolError::unlockFailed;
    case recovery::RecoveryPackageInspectorError::packageUnavailable: return RecoveryToolError::packageUnavailable;
    case recovery::RecoveryPackageInspectorError::resourceLimitExceeded: return RecoveryToolError::resourceLimitExceeded;
    case recovery::RecoveryPackageInspectorError::integrityFailure: return RecoveryToolError::integrityFailure;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError mapInspectionError(RecoveryToolBackendError error) {
  switch (error) {
    case RecoveryToolBackendError::invalidCredential: return RecoveryToolError::invalidCredential;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError mapExportError(recovery::RecoveryExporterError error) {
  using Error = recovery::RecoveryExporterError;
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

}  // namespace galdrine::recoverytool
