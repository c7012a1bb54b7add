#pragma once
// payloadFileEvidence counts, for one snapshot's expectations, how its payload files were
// observed. A file the observations do not mention counts as unreadable, so the four counts
// always add up to the number of required files.

#include "GaldrineRecoveryCore/GaldrineRecoveryPayloadFileEvidenceV1.hpp"
#include "GaldrineRecoveryCore/PayloadExpectation.hpp"
#include "GaldrineRecoveryCore/PayloadObservation.hpp"

[[nodiscard]] GaldrineRecoveryPayloadFileEvidenceV1 payloadFileEvidence(const PayloadExpectationMap& expectations,
                                                                        const PayloadObservationMap& observations);
