#include "recovery/inspection/PayloadFileEvidence.hpp"

#include <utility>

namespace galdrine::recovery {

RecoveryPayloadFileEvidenceV1 payloadFileEvidence(const PayloadExpectationMap& expectations,
                                                          const PayloadObservationMap& observations) {
  RecoveryPayloadFileEvidenceV1 evidence;
  evidence.requiredFileCount = static_cast<std::int64_t>(expectations.size());
  for (const auto& entry : expectations) {
    const auto observed = observations.find(entry.first);
    const auto observation = observed == observations.end() ? PayloadObservation::unreadable : observed->second;
    switch (observation) {
      case PayloadObservation::matching:
        ++evidence.matchingFileCount;
        continue;
      case PayloadObservation::missing:
        ++evidence.missingFileCount;
        continue;
      case PayloadObservation::mismatched:
        ++evidence.mismatchedFileCount;
        continue;
      case PayloadObservation::unreadable:
        ++evidence.unreadableFileCount;
        continue;
    }
    std::unreachable();
  }
  return evidence;
}

}  // namespace galdrine::recovery
