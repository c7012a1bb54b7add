#pragma once
// RecoveryToolInspection is the command line's own copy of an authenticated inspection, so
// that the driver and its documents never see an engine type.

#include <cstdint>
#include <string>
#include <vector>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialFactorV1.hpp"
#include "GaldrineRecoveryTool/RecoveryToolBranch.hpp"
#include "GaldrineRecoveryTool/RecoveryToolBranchDisposition.hpp"
#include "GaldrineRecoveryTool/RecoveryToolSnapshot.hpp"

struct RecoveryToolInspection {
  Bytes packageIdentifier;
  std::string formatIdentifier;
  std::uint64_t formatVersion = 0;
  GaldrineRecoveryToolCredentialFactorV1 unlockedFactor = GaldrineRecoveryToolCredentialFactorV1::backupPassphrase;
  RecoveryToolBranchDisposition branchDisposition = RecoveryToolBranchDisposition::noPublishedHead();
  std::vector<RecoveryToolBranch> branches;
  std::vector<RecoveryToolSnapshot> snapshots;
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;

  friend bool operator==(const RecoveryToolInspection&, const RecoveryToolInspection&) = default;
};
