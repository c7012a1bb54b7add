#pragma once
// InspectionDocument is what inspect prints, with its parts: a snapshot (its counts and its
// payload evidence) and a preserved branch. It names snapshots only by selection code: no
// package, commit or snapshot identifier and no path stands in it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recoverytool/RecoveryToolInspection.hpp"

namespace galdrine::recoverytool {

// CountsDocument holds a snapshot's record counts under their document keys.
struct CountsDocument {
  std::uint64_t items = 0;
  std::uint64_t resources = 0;
  std::uint64_t folders = 0;
  std::uint64_t albums = 0;
  std::uint64_t memberships = 0;
  std::uint64_t tombstones = 0;

  friend bool operator==(const CountsDocument&, const CountsDocument&) = default;
};

// PayloadEvidenceDocument is a snapshot's payload evidence with its verdict: complete when
// every required file matched and none is missing, mismatched or unreadable.
struct PayloadEvidenceDocument {
  bool complete = false;
  std::int64_t requiredFileCount = 0;
  std::int64_t matchingFileCount = 0;
  std::int64_t missingFileCount = 0;
  std::int64_t mismatchedFileCount = 0;
  std::int64_t unreadableFileCount = 0;

  [[nodiscard]] static PayloadEvidenceDocument from(const RecoveryToolPayloadEvidence& evidence) {
    const bool complete = evidence.requiredFileCount == evidence.matchingFileCount && evidence.missingFileCount == 0 &&
                          evidence.mismatchedFileCount == 0 && evidence.unreadableFileCount == 0;
    return {complete,
            evidence.requiredFileCount,
            evidence.matchingFileCount,
            evidence.missingFileCount,
            evidence.mismatchedFileCount,
            evidence.unreadableFileCount};
  }

  friend bool operator==(const PayloadEvidenceDocument&, const PayloadEvidenceDocument&) = default;
};

// SnapshotDocument is one snapshot of the inspection document, named by its selection code.
struct SnapshotDocument {
  std::string selectionCode;
  std::int64_t createdAtUTCMilliseconds = 0;
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool retainedTip = false;
  CountsDocument counts;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  PayloadEvidenceDocument payloadFileEvidence;

  friend bool operator==(const SnapshotDocument&, const SnapshotDocument&) = default;
};

// BranchDocument is one preserved branch: the selection code of its tip and of each of its
// snapshots, in the engine's order.
struct BranchDocument {
  std::string tipSelectionCode;
  std::vector<std::string> snapshotSelectionCodes;

  friend bool operator==(const BranchDocument&, const BranchDocument&) = default;
};

struct InspectionDocument {
  static constexpr std::string_view inspectionSchemaIdentifier = "com.galdrine.recovery.cli-inspection.v1";

  std::string schemaIdentifier;
  std::string formatIdentifier;
  std::uint64_t formatVersion = 0;
  std::string unlockedFactor;
  std::string branchDisposition;
  std::optional<std::string> canonicalTipSelectionCode;  // only for canonicalised branches
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;
  std::vector<BranchDocument> preservedBranches;  // ascending by tip commit identifier
  std::vector<SnapshotDocument> snapshots;        // ascending by commit identifier

  // from builds the document of an inspection. Snapshots and branches are ordered by their
  // identifiers, not by the codes shown, so the order is the package's and not the hash's.
  [[nodiscard]] static InspectionDocument from(const RecoveryToolInspection& inspection);

  friend bool operator==(const InspectionDocument&, const InspectionDocument&) = default;
};

}  // namespace galdrine::recoverytool
