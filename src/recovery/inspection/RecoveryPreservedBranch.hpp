#pragma once
// RecoveryPreservedBranch is the history behind one retained tip: its snapshots from
// the tip back to the root commit.

#include <vector>

#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoverySnapshotPreflight.hpp"

namespace galdrine::recovery {

struct RecoveryPreservedBranch {
  Bytes tipCommitIdentifier;
  std::vector<RecoverySnapshotPreflight> snapshots;  // tip first, walking towards the root

  friend bool operator==(const RecoveryPreservedBranch&, const RecoveryPreservedBranch&) = default;
};

}  // namespace galdrine::recovery
