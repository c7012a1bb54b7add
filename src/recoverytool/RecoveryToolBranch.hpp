#pragma once
// RecoveryToolBranch is one preserved branch: its tip and the commits of its snapshots, in
// the order the engine gave.

#include <vector>

#include "platform/Bytes.hpp"

namespace galdrine::recoverytool {

struct RecoveryToolBranch {
  Bytes tipCommitIdentifier;
  std::vector<Bytes> commitIdentifiers;

  friend bool operator==(const RecoveryToolBranch&, const RecoveryToolBranch&) = default;
};

}  // namespace galdrine::recoverytool
