#pragma once
// ExaminedInspection is an inspection together with what examining each payload file found.
// It serves a caller that must judge the same files once more right after (an export's
// session): for an unchanged expectation it takes the finding over instead of hashing the
// file a second time.

#include <expected>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupKeyEnvelopeSetReaderV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryInspectionLimitsV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectionV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPayloadReadObserverV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPortableFactorV1.hpp"
#include "GaldrineRecoveryCore/PayloadFileExamination.hpp"

struct ExaminedInspection {
  GaldrineRecoveryPackageInspectionV1 inspection;
  PayloadFileExaminationMap payloadFiles;  // every file some authenticated snapshot requires
};

namespace GaldrineRecoveryPackageInspectorV1 {

// inspectExamined is inspect, with the same steps and failures, also giving the examination
// behind every file's evidence. The bpmk stays the caller's.
[[nodiscard]] std::expected<ExaminedInspection, GaldrineRecoveryPackageInspectorV1Error> inspectExamined(
    const GaldrineBackupKeyEnvelopeSetReaderV1& reader, ByteView bpmk, GaldrineRecoveryPortableFactorV1 factor,
    const GaldrineRecoveryInspectionLimitsV1& limits, const GaldrineRecoveryPayloadReadObserverV1& observer = {});

}  // namespace GaldrineRecoveryPackageInspectorV1
