#pragma once
// ExaminedInspection is an inspection together with what examining each payload file found.
// It serves a caller that must judge the same files once more right after (an export's
// session): for an unchanged expectation it takes the finding over instead of hashing the
// file a second time.

#include <expected>

#include "platform/Bytes.hpp"
#include "reader/BackupKeyEnvelopeSetReader.hpp"
#include "recovery/inspection/RecoveryInspectionLimits.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"
#include "recovery/inspection/RecoveryPayloadReadObserver.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"

namespace galdrine::recovery {

struct ExaminedInspection {
  RecoveryPackageInspection inspection;
  PayloadFileExaminationMap payloadFiles;  // every file some authenticated snapshot requires
};

namespace RecoveryPackageInspector {

// inspectExamined is inspect, with the same steps and failures, also giving the examination
// behind every file's evidence. The bpmk stays the caller's.
[[nodiscard]] std::expected<ExaminedInspection, RecoveryPackageInspectorError> inspectExamined(
    const reader::BackupKeyEnvelopeSetReader& reader, ByteView bpmk, envelope::PortableKeyFactorV1 factor,
    const RecoveryInspectionLimits& limits, const RecoveryPayloadReadObserver& observer = {});

}  // namespace RecoveryPackageInspector

}  // namespace galdrine::recovery
