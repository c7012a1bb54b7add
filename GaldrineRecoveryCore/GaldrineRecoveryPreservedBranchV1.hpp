#pragma once
// GaldrineRecoveryPreservedBranchV1 is the history behind one retained tip: its snapshots from
// the tip back to the root commit.

#include <vector>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoverySnapshotPreflightV1.hpp"

struct GaldrineRecoveryPreservedBranchV1 {
  Bytes tipCommitIdentifier;
  std::vector<GaldrineRecoverySnapshotPreflightV1> snapshots;  // tip first, walking towards the root

  friend bool operator==(const GaldrineRecoveryPreservedBranchV1&, const GaldrineRecoveryPreservedBranchV1&) = default;
};
