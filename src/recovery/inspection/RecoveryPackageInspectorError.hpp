#pragma once
// RecoveryPackageInspectorError is the one failure of an inspection. Cases stand in
// contract order and carry nothing: no path, file name, identifier or lower reason leaves the
// inspector. Damage and tampering read alike, and so do a wrong credential and a damaged
// envelope.

#include <cstdint>

namespace galdrine::recovery {

enum class RecoveryPackageInspectorError : std::uint8_t {
  invalidPackage,         // the package or its envelope file cannot be opened or does not bind
  unlockFailed,           // the factor did not open the bpmk
  packageUnavailable,     // a directory or file exists but could not be listed or read
  resourceLimitExceeded,  // a count or size limit was reached
  integrityFailure,       // authenticated data disagrees, or a required file is absent or malformed
};

}  // namespace galdrine::recovery
