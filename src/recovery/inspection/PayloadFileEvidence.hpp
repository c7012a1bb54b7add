#pragma once
// payloadFileEvidence counts, for one snapshot's expectations, how its payload files were
// observed. A file the observations do not mention counts as unreadable, so the four counts
// always add up to the number of required files.

#include "recovery/inspection/RecoveryPayloadFileEvidenceV1.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"
#include "recovery/inspection/PayloadObservation.hpp"

namespace galdrine::recovery {

[[nodiscard]] RecoveryPayloadFileEvidenceV1 payloadFileEvidence(const PayloadExpectationMap& expectations,
                                                                        const PayloadObservationMap& observations);

}  // namespace galdrine::recovery
