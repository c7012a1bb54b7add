#pragma once
// RecoveryToolInspection is the command line's own copy of an authenticated inspection, so
// that the driver and its documents never see an engine type. Its parts: the branch
// disposition, the preserved branches, and each snapshot with its payload evidence.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::recoverytool {

// RecoveryToolBranchDisposition is what the commit graph decided about the package's tips.
// Only canonicalizedBranches carries a value: the commit chosen as the canonical tip.
class RecoveryToolBranchDisposition {
 public:
  enum class Kind : std::uint8_t { canonicalizedBranches, noPublishedHead, singleBranch, unresolvedFork };

  static RecoveryToolBranchDisposition canonicalizedBranches(Bytes canonicalTipIdentifier) {
    return RecoveryToolBranchDisposition(Kind::canonicalizedBranches, std::move(canonicalTipIdentifier));
  }
  static RecoveryToolBranchDisposition noPublishedHead() {
    return RecoveryToolBranchDisposition(Kind::noPublishedHead, {});
  }
  static RecoveryToolBranchDisposition singleBranch() { return RecoveryToolBranchDisposition(Kind::singleBranch, {}); }
  static RecoveryToolBranchDisposition unresolvedFork() {
    return RecoveryToolBranchDisposition(Kind::unresolvedFork, {});
  }

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

// RecoveryToolBranch is one preserved branch: its tip and the commits of its snapshots, in
// the order the engine gave.
struct RecoveryToolBranch {
  Bytes tipCommitIdentifier;
  std::vector<Bytes> commitIdentifiers;

  friend bool operator==(const RecoveryToolBranch&, const RecoveryToolBranch&) = default;
};

// RecoveryToolPayloadEvidence counts the payload files one snapshot needs and what hashing
// each of them found.
struct RecoveryToolPayloadEvidence {
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  friend bool operator==(const RecoveryToolPayloadEvidence&, const RecoveryToolPayloadEvidence&) = default;
};

// RecoveryToolSnapshot is one authenticated snapshot as the command line sees it: its
// commit, its place in the graph, its record counts and its payload evidence.
struct RecoveryToolSnapshot {
  Bytes commitIdentifier;
  std::int64_t createdAtUTCMilliseconds = 0;
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool isRetainedTip = false;
  std::uint64_t itemCount = 0;
  std::uint64_t resourceCount = 0;
  std::uint64_t folderCount = 0;
  std::uint64_t albumCount = 0;
  std::uint64_t membershipCount = 0;
  std::uint64_t tombstoneCount = 0;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  RecoveryToolPayloadEvidence payloadFileEvidence;

  friend bool operator==(const RecoveryToolSnapshot&, const RecoveryToolSnapshot&) = default;
};

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
