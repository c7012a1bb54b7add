#pragma once
// RecoveryPayloadFileEvidenceV1 is what one snapshot's payload files look like on disk:
// of the files its manifest requires, how many match what was promised, are missing, differ,
// or could not be read. The last four always add up to the first.

#include <cstdint>

namespace galdrine::recovery {

struct RecoveryPayloadFileEvidenceV1 {
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  friend bool operator==(const RecoveryPayloadFileEvidenceV1&, const RecoveryPayloadFileEvidenceV1&) = default;
};

}  // namespace galdrine::recovery
