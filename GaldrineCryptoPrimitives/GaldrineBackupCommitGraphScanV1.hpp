#pragma once
// GaldrineBackupCommitGraphScanV1 is what a package's commits and heads add up to.

#include <cstdint>
#include <set>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphAccessStateV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphTipV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineBackupCommitGraphScanV1 {
  GaldrineBackupCommitGraphAccessStateV1 accessState;
  std::vector<GaldrineBackupCommitGraphTipV1> retainedTips;  // all tips, ascending by identifier
  std::set<Bytes> validCommitIdentifiers;                    // every commit given, reached by a head or not
  std::uint64_t maximumWriterEpoch = 0;                      // 0 when there are no commits

  friend bool operator==(const GaldrineBackupCommitGraphScanV1&, const GaldrineBackupCommitGraphScanV1&) = default;
};
