#pragma once
// RecoveryInspectionLimits bounds what one inspection may authenticate of manifests:
// the plaintext bytes of all manifest roots and sections together, and their records. A
// manifest artifact shared by several snapshots counts once. A total exactly at a limit passes.

#include <cstdint>

namespace galdrine::recovery {

struct RecoveryInspectionLimits {
  std::uint64_t maximumManifestPlaintextByteCount = 268'435'456;  // 256 MiB
  std::uint64_t maximumManifestRecordCount = 1'000'000;

  friend bool operator==(const RecoveryInspectionLimits&, const RecoveryInspectionLimits&) = default;
};

}  // namespace galdrine::recovery
