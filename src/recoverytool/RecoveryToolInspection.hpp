#pragma once
// RecoveryToolInspection is the command line's own copy of an authenticated inspection, so
// that the driver and its documents never see an engine type.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Bytes.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "recoverytool/RecoveryToolBranch.hpp"
#include "recoverytool/RecoveryToolBranchDisposition.hpp"
#include "recoverytool/RecoveryToolSnapshot.hpp"

namespace galdrine::recoverytool {

struct RecoveryToolInspection {
  Bytes packageIdentifier;
  std::string formatIdentifier;
  std::uint64_t formatVersion = 0;
  envelope::PortableKeyFactorV1 unlockedFactor = envelope::PortableKeyFactorV1::backupPassphrase;
  RecoveryToolBranchDisposition branchDisposition = RecoveryToolBranchDisposition::noPublishedHead();
  std::vector<RecoveryToolBranch> branches;
  std::vector<RecoveryToolSnapshot> snapshots;
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;

  friend bool operator==(const RecoveryToolInspection&, const RecoveryToolInspection&) = default;
};

}  // namespace galdrine::recoverytool
