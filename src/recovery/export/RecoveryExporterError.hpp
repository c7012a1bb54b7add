#pragma once
// RecoveryExporterError is every way an export, or a restore session, can fail, in
// the order in which the checks meet them. A payload that is missing or damaged is not among
// them: it only marks its resource. No case carries a path, an identifier or a reason.

#include <cstdint>

namespace galdrine::recovery {

enum class RecoveryExporterError : std::uint8_t {
  invalidPackage,          // the package or its envelope file cannot be opened or is not bound
  unlockFailed,            // the credential did not open the package master key
  snapshotNotFound,        // the selected commit identifier is malformed or was not authenticated
  destinationExists,       // something already stands at the destination
  destinationUnavailable,  // the destination or its parent cannot be used
  resourceLimitExceeded,   // a count limit was reached
  integrityFailure,        // authenticated data disagrees
  outputWriteFailed,       // writing the output failed
};

}  // namespace galdrine::recovery
