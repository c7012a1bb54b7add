#pragma once
// GaldrineRecoveryInspectionLimitsV1 bounds what one inspection may authenticate of manifests:
// the plaintext bytes of all manifest roots and sections together, and their records. A
// manifest artifact shared by several snapshots counts once. A total exactly at a limit passes.

#include <cstdint>

struct GaldrineRecoveryInspectionLimitsV1 {
  std::uint64_t maximumManifestPlaintextByteCount = 268'435'456;  // 256 MiB
  std::uint64_t maximumManifestRecordCount = 1'000'000;

  friend bool operator==(const GaldrineRecoveryInspectionLimitsV1&, const GaldrineRecoveryInspectionLimitsV1&) = default;
};
