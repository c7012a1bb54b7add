#pragma once
// PayloadObservation is what one payload file turned out to be against its expectation:
// matching, missing, mismatched (wrong kind, length or digest), or unreadable (a link, a failed
// read, or a file that changed while it was hashed). A damaged payload file is data for the
// evidence, never a failure of the inspection.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <span>

#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"
#include "recovery/inspection/RecoveryPayloadReadObserver.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"

namespace galdrine::recovery {

enum class PayloadObservation : std::uint8_t {
  matching,
  missing,
  mismatched,
  unreadable,
};

using PayloadObservationMap = std::map<Bytes, PayloadObservation>;

namespace PayloadObservations {

// Payload files are streamed in pieces of this size and never held whole.
inline constexpr std::size_t readPieceByteCount = PayloadFileExaminations::readPieceByteCount;

// observation is how the inspector reads an examination: a missing file is missing; a file
// that would not give its status or open, a failed read and a file that changed while it was
// hashed are unreadable; a failed fstat, anything but a regular file, and a wrong length or
// digest are mismatched.
[[nodiscard]] PayloadObservation observation(PayloadFileExamination examination);

// observePayloadFile examines the file at `path` against `expectation` and gives its
// observation (PayloadFileExaminations::examine tells the steps). `buffer` must hold one
// piece. Nothing stays open.
[[nodiscard]] PayloadObservation observePayloadFile(const std::filesystem::path& path, const PayloadExpectation& expectation,
                                                    std::span<std::uint8_t> buffer,
                                                    const RecoveryPayloadReadObserver& observer);

// examinePayloadFiles examines each file of `expectations` once, in identifier order: a chunk
// under "objects", a pack segment under "packs", by its canonical file name. A directory that
// the package refuses or a name that cannot be formed ends the operation (integrityFailure).
[[nodiscard]] std::expected<PayloadFileExaminationMap, RecoveryPackageInspectorError> examinePayloadFiles(
    const PayloadExpectationMap& expectations, const format::BackupPackageV1& package,
    const RecoveryPayloadReadObserver& observer);

// observations gives each examined file its observation.
[[nodiscard]] PayloadObservationMap observations(const PayloadFileExaminationMap& examinations);

}  // namespace PayloadObservations

}  // namespace galdrine::recovery
