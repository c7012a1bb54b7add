#pragma once
// PayloadObservation is what one payload file turned out to be against its expectation:
// matching, missing, mismatched (wrong kind, length or digest), or unreadable (a link, a failed
// read, or a file that changed while it was hashed). A damaged payload file is data for the
// evidence, never a failure of the inspection.

#include <cstdint>
#include <expected>
#include <map>

#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

enum class PayloadObservation : std::uint8_t {
  matching,
  missing,
  mismatched,
  unreadable,
};

using PayloadObservationMap = ByteMap<PayloadObservation>;

namespace PayloadObservations {

// observation is how the inspector reads an examination: a missing file is missing; a file
// that would not give its status or open, a failed read and a file that changed while it was
// hashed are unreadable; a failed fstat, anything but a regular file, and a wrong length or
// digest are mismatched.
[[nodiscard]] PayloadObservation observation(PayloadFileExamination examination);

// examinePayloadFiles examines each file of `expectations` once, in identifier order: a chunk
// under "objects", a pack segment under "packs", by its canonical file name. A directory that
// the package refuses or a name that cannot be formed ends the operation (integrityFailure).
[[nodiscard]] std::expected<PayloadFileExaminationMap, RecoveryPackageInspectorError> examinePayloadFiles(
    const PayloadExpectationMap& expectations, const format::BackupPackageV1& package,
    const RecoveryPayloadReadObserver& observer);

// observations gives each examined file its observation.
[[nodiscard]] PayloadObservationMap observations(const PayloadFileExaminationMap& examinations);

}  // namespace PayloadObservations

// payloadFileEvidence counts, for one snapshot's expectations, how its payload files were
// observed. A file the observations do not mention counts as unreadable, so the four counts
// always add up to the number of required files.
[[nodiscard]] RecoveryPayloadFileEvidence payloadFileEvidence(const PayloadExpectationMap& expectations,
                                                              const PayloadObservationMap& observations);

}  // namespace galdrine::recovery
