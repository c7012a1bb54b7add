#pragma once
// RecoveryToolPayloadEvidence counts the payload files one snapshot needs and what hashing
// each of them found.

#include <cstdint>

namespace galdrine::recoverytool {

struct RecoveryToolPayloadEvidence {
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  friend bool operator==(const RecoveryToolPayloadEvidence&, const RecoveryToolPayloadEvidence&) = default;
};

}  // namespace galdrine::recoverytool
