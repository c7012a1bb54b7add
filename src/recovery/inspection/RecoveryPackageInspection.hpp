#pragma once
// RecoveryPackageInspection is what an inspection proved about a package: which
// snapshots are authentic, how its branches stand, and how complete each snapshot's payload
// files are on disk.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryBranchDispositionV1.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "recovery/inspection/RecoveryPreservedBranch.hpp"
#include "recovery/inspection/RecoverySnapshotPreflight.hpp"

namespace galdrine::recovery {

struct RecoveryPackageInspection {
  Bytes packageIdentifier;        // from the header
  Bytes libraryDomainIdentifier;  // from the envelope set
  std::string formatIdentifier;   // the canonical format identifier
  std::uint64_t formatVersion = 1;
  envelope::PortableKeyFactorV1 unlockedFactor = envelope::PortableKeyFactorV1::backupPassphrase;
  RecoveryBranchDispositionV1 branchDisposition = RecoveryBranchDispositionV1::noPublishedHead();
  std::vector<RecoveryPreservedBranch> preservedBranches;         // one per retained tip, in the scan's order
  std::vector<RecoverySnapshotPreflight> authenticatedSnapshots;  // one per commit, ascending by its identifier
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;
  Bytes keyEnvelopeSetSHA256;

  friend bool operator==(const RecoveryPackageInspection&, const RecoveryPackageInspection&) = default;
};

}  // namespace galdrine::recovery
