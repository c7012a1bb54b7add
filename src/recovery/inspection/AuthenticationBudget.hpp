#pragma once
// AuthenticationBudget is the one allowance of manifest plaintext bytes and records that a
// whole inspection may authenticate, shared by all of its commits. Each manifest artifact is
// charged once, by identifier: a manifest shared by several snapshots costs once, and a second
// reference to the same identifier must agree with the first in all five fields.

#include <cstdint>
#include <expected>
#include <map>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

// RecoveryInspectionLimits bounds what one inspection may authenticate of manifests: the
// plaintext bytes of all manifest roots and sections together, and their records. A total
// exactly at a limit passes.
struct RecoveryInspectionLimits {
  std::uint64_t maximumManifestPlaintextByteCount = 268'435'456;  // 256 MiB
  std::uint64_t maximumManifestRecordCount = 1'000'000;

  friend bool operator==(const RecoveryInspectionLimits&, const RecoveryInspectionLimits&) = default;
};

class AuthenticationBudget {
 public:
  explicit AuthenticationBudget(const RecoveryInspectionLimits& limits)
      : maximumManifestPlaintextByteCount_(limits.maximumManifestPlaintextByteCount),
        maximumManifestRecordCount_(limits.maximumManifestRecordCount) {}

  // reserve charges `reference` with its plaintext bytes and `recordCount` records before the
  // artifact is read. An identifier already charged costs nothing more if the reference equals
  // the charged one, and is integrityFailure if it does not. A total that overflows or passes
  // its limit is resourceLimitExceeded; a total exactly at the limit passes. A refused charge
  // leaves the budget as it was.
  [[nodiscard]] std::expected<void, RecoveryPackageInspectorError> reserve(
      const format::BackupArtifactReferenceV1& reference, std::uint64_t recordCount);

  [[nodiscard]] std::uint64_t consumedPlaintextByteCount() const { return consumedPlaintextByteCount_; }
  [[nodiscard]] std::uint64_t consumedRecordCount() const { return consumedRecordCount_; }

 private:
  std::uint64_t maximumManifestPlaintextByteCount_;
  std::uint64_t maximumManifestRecordCount_;
  std::uint64_t consumedPlaintextByteCount_ = 0;
  std::uint64_t consumedRecordCount_ = 0;
  ByteMap<format::BackupArtifactReferenceV1> charged_;
};

}  // namespace galdrine::recovery
