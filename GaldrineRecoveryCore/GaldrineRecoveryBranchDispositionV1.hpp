#pragma once
// GaldrineRecoveryBranchDispositionV1 says how a package's branches stand, as the commit graph
// decided: several retained tips settled by one canonical tip, no published head, one single
// branch, or a fork that no tip settles. Only canonicalizedBranches carries a payload.

#include <cstdint>

#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineRecoveryBranchDispositionV1 {
  enum class Code : std::uint8_t {
    canonicalizedBranches,  // payload: the canonical tip's commit identifier
    noPublishedHead,
    singleBranch,
    unresolvedFork,
  };

  Code code;
  Bytes canonicalTipIdentifier;  // empty for the cases without one

  static GaldrineRecoveryBranchDispositionV1 canonicalizedBranches(Bytes canonicalTipIdentifier) {
    return {Code::canonicalizedBranches, std::move(canonicalTipIdentifier)};
  }
  static GaldrineRecoveryBranchDispositionV1 noPublishedHead() { return {Code::noPublishedHead, {}}; }
  static GaldrineRecoveryBranchDispositionV1 singleBranch() { return {Code::singleBranch, {}}; }
  static GaldrineRecoveryBranchDispositionV1 unresolvedFork() { return {Code::unresolvedFork, {}}; }

  friend bool operator==(const GaldrineRecoveryBranchDispositionV1&, const GaldrineRecoveryBranchDispositionV1&) = default;
};
