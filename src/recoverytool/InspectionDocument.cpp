#include "recoverytool/InspectionDocument.hpp"

#include <algorithm>
#include <functional>
#include <utility>

#include "recoverytool/RecoveryToolSelectionCode.hpp"

namespace galdrine::recoverytool {

namespace {

std::string_view dispositionText(RecoveryToolBranchDisposition::Kind kind) {
  using enum RecoveryToolBranchDisposition::Kind;
  switch (kind) {
    case canonicalizedBranches:
      return "canonicalized-branches";
    case noPublishedHead:
      return "no-published-head";
    case singleBranch:
      return "single-branch";
    case unresolvedFork:
      return "unresolved-fork";
  }
  std::unreachable();
}

SnapshotDocument snapshotDocument(const RecoveryToolSnapshot& snapshot, ByteView packageIdentifier) {
  return {RecoveryTool::selectionCode(packageIdentifier, snapshot.commitIdentifier),
          snapshot.createdAtUTCMilliseconds,
          snapshot.writerEpoch,
          snapshot.generation,
          snapshot.isRetainedTip,
          {snapshot.itemCount, snapshot.resourceCount, snapshot.folderCount, snapshot.albumCount,
           snapshot.membershipCount, snapshot.tombstoneCount},
          snapshot.logicalPlaintextByteCount,
          snapshot.encryptedPayloadByteCount,
          PayloadEvidenceDocument::from(snapshot.payloadFileEvidence)};
}

BranchDocument branchDocument(const RecoveryToolBranch& branch, ByteView packageIdentifier) {
  BranchDocument document{RecoveryTool::selectionCode(packageIdentifier, branch.tipCommitIdentifier), {}};
  for (const Bytes& commitIdentifier : branch.commitIdentifiers) {
    document.snapshotSelectionCodes.push_back(RecoveryTool::selectionCode(packageIdentifier, commitIdentifier));
  }
  return document;
}

// sortedBy gives the records in ascending byte order of one identifier field, keeping the
// engine's order among equal identifiers.
template <typename Record>
std::vector<const Record*> sortedBy(const std::vector<Record>& records, Bytes Record::*identifier) {
  std::vector<const Record*> sorted;
  for (const Record& record : records) sorted.push_back(&record);
  std::ranges::stable_sort(sorted, [&](const Record* left, const Record* right) {
    return ByteOrder::precedes(left->*identifier, right->*identifier);
  });
  return sorted;
}

}  // namespace

InspectionDocument InspectionDocument::from(const RecoveryToolInspection& inspection) {
  const ByteView packageIdentifier = inspection.packageIdentifier;
  InspectionDocument document;
  document.schemaIdentifier = inspectionSchemaIdentifier;
  document.formatIdentifier = inspection.formatIdentifier;
  document.formatVersion = inspection.formatVersion;
  document.unlockedFactor = rawValue(inspection.unlockedFactor);
  document.branchDisposition = dispositionText(inspection.branchDisposition.kind());
  if (inspection.branchDisposition.kind() == RecoveryToolBranchDisposition::Kind::canonicalizedBranches) {
    document.canonicalTipSelectionCode =
        RecoveryTool::selectionCode(packageIdentifier, inspection.branchDisposition.canonicalTipIdentifier());
  }
  document.authenticatedCommitCount = inspection.authenticatedCommitCount;
  document.authenticatedHeadCount = inspection.authenticatedHeadCount;
  document.maximumWriterEpoch = inspection.maximumWriterEpoch;
  for (const RecoveryToolBranch* branch : sortedBy(inspection.branches, &RecoveryToolBranch::tipCommitIdentifier)) {
    document.preservedBranches.push_back(branchDocument(*branch, packageIdentifier));
  }
  for (const RecoveryToolSnapshot* snapshot : sortedBy(inspection.snapshots, &RecoveryToolSnapshot::commitIdentifier)) {
    document.snapshots.push_back(snapshotDocument(*snapshot, packageIdentifier));
  }
  return document;
}

}  // namespace galdrine::recoverytool
