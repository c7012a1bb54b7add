#pragma once
// BackupCommitGraphScan is what a package's commits and heads add up to.

#include <cstdint>
#include <set>
#include <vector>

#include "format/graph/BackupCommitGraphAccessState.hpp"
#include "format/graph/BackupCommitGraphTip.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupCommitGraphScan {
  BackupCommitGraphAccessState accessState;
  std::vector<BackupCommitGraphTip> retainedTips;  // all tips, ascending by identifier
  std::set<Bytes> validCommitIdentifiers;                    // every commit given, reached by a head or not
  std::uint64_t maximumWriterEpoch = 0;                      // 0 when there are no commits

  friend bool operator==(const BackupCommitGraphScan&, const BackupCommitGraphScan&) = default;
};

}  // namespace galdrine::format
