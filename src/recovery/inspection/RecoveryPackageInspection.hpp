#pragma once
// RecoveryPackageInspection is what an inspection proved about a package: which snapshots
// are authentic, how its branches stand, and how complete each snapshot's payload files are on
// disk. It and its parts are plain values; nothing in them refers back to the package.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "envelope/PortableKeyFactorV1.hpp"
#include "format/graph/BackupManifestCountsV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::recovery {

// RecoveryPayloadFileEvidence is what one snapshot's payload files look like on disk: of the
// files its manifest requires, how many match what was promised, are missing, differ, or could
// not be read. The last four always add up to the first.
struct RecoveryPayloadFileEvidence {
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  friend bool operator==(const RecoveryPayloadFileEvidence&, const RecoveryPayloadFileEvidence&) = default;
};

// RecoverySnapshotPreflight is one authenticated commit as the user sees it: its place in the
// history, what its snapshot holds, and the state of the payload files it needs.
struct RecoverySnapshotPreflight {
  Bytes commitIdentifier;
  Bytes snapshotIdentifier;
  std::int64_t createdAtUTCMilliseconds = 0;  // the commit's own signed value
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool isRetainedTip = false;
  format::BackupManifestCountsV1 counts;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  RecoveryPayloadFileEvidence payloadFileEvidence;

  friend bool operator==(const RecoverySnapshotPreflight&, const RecoverySnapshotPreflight&) = default;
};

// RecoveryPreservedBranch is the history behind one retained tip: its snapshots from the tip
// back to the root commit.
struct RecoveryPreservedBranch {
  Bytes tipCommitIdentifier;
  std::vector<RecoverySnapshotPreflight> snapshots;  // tip first, walking towards the root

  friend bool operator==(const RecoveryPreservedBranch&, const RecoveryPreservedBranch&) = default;
};

// RecoveryBranchDisposition says how a package's branches stand, as the commit graph decided:
// several retained tips settled by one canonical tip, no published head, one single branch, or
// a fork that no tip settles. Only canonicalizedBranches carries a payload.
struct RecoveryBranchDisposition {
  enum class Code : std::uint8_t {
    canonicalizedBranches,  // payload: the canonical tip's commit identifier
    noPublishedHead,
    singleBranch,
    unresolvedFork,
  };

  Code code;
  Bytes canonicalTipIdentifier;  // empty for the cases without one

  static RecoveryBranchDisposition canonicalizedBranches(Bytes canonicalTipIdentifier) {
    return {Code::canonicalizedBranches, std::move(canonicalTipIdentifier)};
  }
  static RecoveryBranchDisposition noPublishedHead() { return {Code::noPublishedHead, {}}; }
  static RecoveryBranchDisposition singleBranch() { return {Code::singleBranch, {}}; }
  static RecoveryBranchDisposition unresolvedFork() { return {Code::unresolvedFork, {}}; }

  friend bool operator==(const RecoveryBranchDisposition&, const RecoveryBranchDisposition&) = default;
};

struct RecoveryPackageInspection {
  Bytes packageIdentifier;        // from the header
  Bytes libraryDomainIdentifier;  // from the envelope set
  std::string formatIdentifier;   // the canonical format identifier
  std::uint64_t formatVersion = 1;
  envelope::PortableKeyFactorV1 unlockedFactor = envelope::PortableKeyFactorV1::backupPassphrase;
  RecoveryBranchDisposition branchDisposition = RecoveryBranchDisposition::noPublishedHead();
  std::vector<RecoveryPreservedBranch> preservedBranches;         // one per retained tip, in the scan's order
  std::vector<RecoverySnapshotPreflight> authenticatedSnapshots;  // one per commit, ascending by its identifier
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;
  Bytes keyEnvelopeSetSHA256;

  friend bool operator==(const RecoveryPackageInspection&, const RecoveryPackageInspection&) = default;
};

}  // namespace galdrine::recovery
