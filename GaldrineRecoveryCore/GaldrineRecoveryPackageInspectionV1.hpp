#pragma once
// GaldrineRecoveryPackageInspectionV1 is what an inspection proved about a package: which
// snapshots are authentic, how its branches stand, and how complete each snapshot's payload
// files are on disk.

#include <cstdint>
#include <string>
#include <vector>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryBranchDispositionV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPortableFactorV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPreservedBranchV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoverySnapshotPreflightV1.hpp"

struct GaldrineRecoveryPackageInspectionV1 {
  Bytes packageIdentifier;        // from the header
  Bytes libraryDomainIdentifier;  // from the envelope set
  std::string formatIdentifier;   // the canonical format identifier
  std::uint64_t formatVersion = 1;
  GaldrineRecoveryPortableFactorV1 unlockedFactor = GaldrineRecoveryPortableFactorV1::backupPassphrase;
  GaldrineRecoveryBranchDispositionV1 branchDisposition = GaldrineRecoveryBranchDispositionV1::noPublishedHead();
  std::vector<GaldrineRecoveryPreservedBranchV1> preservedBranches;         // one per retained tip, in the scan's order
  std::vector<GaldrineRecoverySnapshotPreflightV1> authenticatedSnapshots;  // one per commit, ascending by its identifier
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;
  Bytes keyEnvelopeSetSHA256;

  friend bool operator==(const GaldrineRecoveryPackageInspectionV1&, const GaldrineRecoveryPackageInspectionV1&) = default;
};
