#pragma once
// RecoveryToolError is every outcome of a run that the user can tell apart, in the order of
// the error table (RecoveryToolFailureOutput). The cases carry no text: the words belong to
// the table alone.

#include <cstdint>

namespace galdrine::recoverytool {

enum class RecoveryToolError : std::uint8_t {
  invalidArguments,
  appCodeForbidden,
  credentialInArguments,
  credentialUnavailable,
  invalidCredential,
  invalidPackage,
  unlockFailed,
  packageUnavailable,
  resourceLimitExceeded,
  integrityFailure,
  snapshotSelectionNotFound,
  destinationExists,
  destinationUnavailable,
  outputWriteFailed,
  compatibilityVerificationFailed,
  // Not one of the user-visible outcomes above: a failed self-test step, a document that
  // could not be encoded, or an operation this build cannot perform. It is reported with
  // the table's one generic text.
  operationFailed,
};

}  // namespace galdrine::recoverytool
