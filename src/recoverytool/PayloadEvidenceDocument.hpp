#pragma once
// PayloadEvidenceDocument is a snapshot's payload evidence with its verdict: complete when
// every required file matched and none is missing, mismatched or unreadable.

#include <cstdint>

#include "recoverytool/RecoveryToolPayloadEvidence.hpp"

namespace galdrine::recoverytool {

struct PayloadEvidenceDocument {
  bool complete = false;
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  [[nodiscard]] static PayloadEvidenceDocument from(const RecoveryToolPayloadEvidence& evidence) {
    const bool complete = evidence.requiredFileCount == evidence.matchingFileCount && evidence.missingFileCount == 0 &&
                          evidence.mismatchedFileCount == 0 && evidence.unreadableFileCount == 0;
    return {complete,
            evidence.requiredFileCount,
            evidence.matchingFileCount,
            evidence.missingFileCount,
            evidence.mismatchedFileCount,
            evidence.unreadableFileCount};
  }

  friend bool operator==(const PayloadEvidenceDocument&, const PayloadEvidenceDocument&) = default;
};

}  // namespace galdrine::recoverytool
