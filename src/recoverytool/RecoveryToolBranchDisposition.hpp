#pragma once
// RecoveryToolBranchDisposition is what the commit graph decided about the package's tips.
// Only canonicalizedBranches carries a value: the commit chosen as the canonical tip.

#include <cstdint>
#include <utility>

#include "platform/Bytes.hpp"

namespace galdrine::recoverytool {

class RecoveryToolBranchDisposition {
 public:
  enum class Kind : std::uint8_t { canonicalizedBranches, noPublishedHead, singleBranch, unresolvedFork };

  static RecoveryToolBranchDisposition canonicalizedBranches(Bytes canonicalTipIdentifier) {
    return RecoveryToolBranchDisposition(Kind::canonicalizedBranches, std::move(canonicalTipIdentifier));
  }
  static RecoveryToolBranchDisposition noPublishedHead() { return RecoveryToolBranchDisposition(Kind::noPublishedHead, {}); }
  static RecoveryToolBranchDisposition singleBranch() { return RecoveryToolBranchDisposition(Kind::singleBranch, {}); }
  static RecoveryToolBranchDisposition unresolvedFork() { return RecoveryToolBranchDisposition(Kind::unresolvedFork, {}); }

  [[nodiscard]] Kind kind() const { return kind_; }
  // canonicalTipIdentifier is empty for every case but canonicalizedBranches.
  [[nodiscard]] const Bytes& canonicalTipIdentifier() const { return canonicalTipIdentifier_; }

  friend bool operator==(const RecoveryToolBranchDisposition&, const RecoveryToolBranchDisposition&) = default;

 private:
  RecoveryToolBranchDisposition(Kind kind, Bytes canonicalTipIdentifier)
      : kind_(kind), canonicalTipIdentifier_(std::move(canonicalTipIdentifier)) {}

  Kind kind_;
  Bytes canonicalTipIdentifier_;
};

}  // namespace galdrine::recoverytool
