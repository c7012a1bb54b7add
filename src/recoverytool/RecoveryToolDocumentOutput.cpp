#include "recoverytool/RecoveryToolDocumentOutput.hpp"

#include <nlohmann/json.hpp>

#include "platform/JSONText.hpp"

namespace galdrine::recoverytool {

namespace {

// Documents are built as nlohmann values and written by JSONText, which sorts keys at
// every level and leaves "/" unescaped.
using JSON = nlohmann::json;

JSON toJSON(const CountsDocument& counts) {
  return {{"items", counts.items},   {"resources", counts.resources},     {"folders", counts.folders},
          {"albums", counts.albums}, {"memberships", counts.memberships}, {"tombstones", counts.tombstones}};
}

JSON toJSON(const PayloadEvidenceDocument& evidence) {
  return {{"complete", evidence.complete},
          {"requiredFileCount", evidence.requiredFileCount},
          {"matchingFileCount", evidence.matchingFileCount},
          {"missingFileCount", evidence.missingFileCount},
          {"mismatchedFileCount", evidence.mismatchedFileCount},
          {"unreadableFileCount", evidence.unreadableFileCount}};
}

JSON toJSON(const SnapshotDocument& snapshot) {
  return {{"selectionCode", snapshot.selectionCode},
          {"createdAtUTCMilliseconds", snapshot.createdAtUTCMilliseconds},
          {"writerEpoch", snapshot.writerEpoch},
          {"generation", snapshot.generation},
          {"retainedTip", snapshot.retainedTip},
          {"counts", toJSON(snapshot.counts)},
          {"logicalPlaintextByteCount", snapshot.logicalPlaintextByteCount},
          {"encryptedPayloadByteCount", snapshot.encryptedPayloadByteCount},
          {"payloadFileEvidence", toJSON(snapshot.payloadFileEvidence)}};
}

JSON toJSON(const BranchDocument& branch) {
  return {{"tipSelectionCode", branch.tipSelectionCode}, {"snapshotSelectionCodes", branch.snapshotSelectionCodes}};
}

JSON toJSON(const InspectionDocument& document) {
  JSON branches = JSON::array();
  for (const BranchDocument& branch : document.preservedBranches) branches.push_back(toJSON(branch));
  JSON snapshots = JSON::array();
  for (const SnapshotDocument& snapshot : document.snapshots) snapshots.push_back(toJSON(snapshot));
  JSON json = {{"schemaIdentifier", document.schemaIdentifier},
               {"formatIdentifier", document.formatIdentifier},
               {"formatVersion", document.formatVersion},
               {"unlockedFactor", document.unlockedFactor},
               {"branchDisposition", document.branchDisposition},
               {"authenticatedCommitCount", document.authenticatedCommitCount},
               {"authenticatedHeadCount", document.authenticatedHeadCount},
               {"maximumWriterEpoch", document.maximumWriterEpoch},
               {"preservedBranches", std::move(branches)},
               {"snapshots", std::move(snapshots)}};
  if (document.canonicalTipSelectionCode) json["canonicalTipSelectionCode"] = *document.canonicalTipSelectionCode;
  return json;
}

JSON toJSON(const ExportDocument& document) {
  return {{"schemaIdentifier", document.schemaIdentifier},
          {"status", document.status},
          {"selectedSnapshotCode", document.selectedSnapshotCode},
          {"totalItemCount", document.totalItemCount},
          {"recoveredItemCount", document.recoveredItemCount},
          {"totalResourceCount", document.totalResourceCount},
          {"recoveredResourceCount", document.recoveredResourceCount},
          {"failedResourceCount", document.failedResourceCount}};
}

std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> successWith(const JSON& json) {
  auto text = platform::JSONText::encoded(json);
  if (!text) return std::unexpected(RecoveryToolDocumentEncodingError::encodingFailed);
  text->push_back('\n');
  return RecoveryToolExecution{0, ByteText::bytes(*text), {}};
}

}  // namespace

namespace RecoveryTool {

std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(const InspectionDocument& json) {
  return successWith(toJSON(json));
}

std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(const ExportDocument& json) {
  return successWith(toJSON(json));
}

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
