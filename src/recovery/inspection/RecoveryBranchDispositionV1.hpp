#pragma once
// RecoveryBranchDispositionV1 says how a package's branches stand, as the commit graph
// decided: several retained tips settled by one canonical tip, no published head, one single
// branch, or a fork that no tip settles. Only canonicalizedBranches carries a payload.

#include <cstdint>

#include "platform/Bytes.hpp"

namespace galdrine::recovery {

struct RecoveryBranchDispositionV1 {
  enum class Code : std::uint8_t {
    canonicalizedBranches,  // payload: the canonical tip's commit identifier
    noPublishedHead,
    singleBranch,
    unresolvedFork,
  };

  Code code;
  Bytes canonicalTipIdentifier;  // empty for the cases without one

  static RecoveryBranchDispositionV1 canonicalizedBranches(Bytes canonicalTipIdentifier) {
    return {Code::canonicalizedBranches, std::move(canonicalTipIdentifier)};
  }
  static RecoveryBranchDispositionV1 noPublishedHead() { return {Code::noPublishedHead, {}}; }
  static RecoveryBranchDispositionV1 singleBranch() { return {Code::singleBranch, {}}; }
  static RecoveryBranchDispositionV1 unresolvedFork() { return {Code::unresolvedFork, {}}; }

  friend bool operator==(const RecoveryBranchDispositionV1&, const RecoveryBranchDispositionV1&) = default;
};

}  // namespace galdrine::recovery
