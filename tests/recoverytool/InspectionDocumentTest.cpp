// The inspection document byte for byte, its order and its verdicts, and the selection code
// that names snapshots in it.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "recoverytool/RecoveryToolDocumentOutput.hpp"
#include "recoverytool/RecoveryToolSelectionCode.hpp"

namespace galdrine::recoverytool {

namespace {

using RecoveryTool::selectionCode;
using Json = nlohmann::json;

const Bytes packageIdentifier{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

// printed is what inspect prints for `inspection`.
std::string printed(const RecoveryToolInspection& inspection) {
  const auto execution = RecoveryTool::success(InspectionDocument::from(inspection));
  return execution ? std::string(ByteText::text(execution->standardOutput)) : "encoding failed";
}

TEST(RecoveryToolSelectionCode, IsTheDigestOfLabelPackageAndCommit) {
  Bytes commit(16);
  for (std::uint8_t index = 0; index < 16; ++index) commit[index] = static_cast<std::uint8_t>(16 + index);
  EXPECT_EQ(selectionCode(packageIdentifier, commit),
            "56937ce7ba1f179291352fb14c4a60a2ca65479fa0406104cf36109a3f7a5528");
}

TEST(InspectionDocument, PrintsEveryFieldByteForByte) {
  const Bytes commit(16, 0x55);
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  inspection.formatIdentifier = "com.galdrine/backup ü \x01";
  inspection.formatVersion = 1;
  inspection.unlockedFactor = envelope::PortableKeyFactorV1::recoveryKey;
  inspection.branchDisposition = RecoveryToolBranchDisposition::canonicalizedBranches(commit);
  inspection.snapshots = {{commit, -1, 18446744073709551615u, 2, true, 3, 4, 5, 6, 7, 8, 9, 10, {1, 1, 0, 0, 0}}};
  inspection.branches = {{commit, {commit}}};
  inspection.authenticatedCommitCount = 11;
  inspection.authenticatedHeadCount = 12;
  inspection.maximumWriterEpoch = 13;
  const std::string output = printed(inspection);
  // Two spaces of indentation, keys sorted at every level, "/" and non-ASCII text as they are,
  // control characters escaped, one final line feed: the document's one text form.
  EXPECT_EQ(output, Json::parse(output).dump(2) + "\n");
  std::string expected = R"({"schemaIdentifier": "com.galdrine.recovery.cli-inspection.v1",
    "formatIdentifier": "com.galdrine/backup ü \u0001", "formatVersion": 1, "unlockedFactor": "recovery-key",
    "branchDisposition": "canonicalized-branches", "canonicalTipSelectionCode": "C", "authenticatedCommitCount": 11,
    "authenticatedHeadCount": 12, "maximumWriterEpoch": 13,
    "preservedBranches": [{"tipSelectionCode": "C", "snapshotSelectionCodes": ["C"]}],
    "snapshots": [{"selectionCode": "C", "createdAtUTCMilliseconds": -1, "writerEpoch": 18446744073709551615,
      "generation": 2, "retainedTip": true, "logicalPlaintextByteCount": 9, "encryptedPayloadByteCount": 10,
      "counts": {"items": 3, "resources": 4, "folders": 5, "albums": 6, "memberships": 7, "tombstones": 8},
      "payloadFileEvidence": {"complete": true, "requiredFileCount": 1, "matchingFileCount": 1, "missingFileCount": 0,
        "mismatchedFileCount": 0, "unreadableFileCount": 0}}]})";
  const std::string code = '"' + selectionCode(packageIdentifier, commit) + '"';
  for (std::size_t at = 0; (at = expected.find("\"C\"", at)) != std::string::npos;) expected.replace(at, 3, code);
  EXPECT_EQ(Json::parse(output), Json::parse(expected));
}

TEST(InspectionDocument, EachDispositionHasItsTextAndOnlyACanonicalisedOneATip) {
  const std::pair<RecoveryToolBranchDisposition, std::string> cases[] = {
      {RecoveryToolBranchDisposition::noPublishedHead(), "no-published-head"},
      {RecoveryToolBranchDisposition::singleBranch(), "single-branch"},
      {RecoveryToolBranchDisposition::unresolvedFork(), "unresolved-fork"},
  };
  for (const auto& [disposition, text] : cases) {
    RecoveryToolInspection inspection;
    inspection.branchDisposition = disposition;
    const std::string output = printed(inspection);
    EXPECT_TRUE(output.contains("\"branchDisposition\": \"" + text + "\",")) << output;
    EXPECT_FALSE(output.contains("canonicalTipSelectionCode")) << output;
    // An empty package still has both lists.
    EXPECT_TRUE(output.contains("\"preservedBranches\": [],") && output.contains("\"snapshots\": [],")) << output;
  }
}

TEST(InspectionDocument, OrdersSnapshotsAndBranchesByIdentifierBytes) {
  RecoveryToolInspection inspection;
  std::uint64_t generation = 0;  // tells the snapshots apart
  for (const Bytes& commit : {Bytes{0x02}, Bytes{0x01, 0x00}, Bytes{0x01}, Bytes{0x01}, Bytes{0xFF}}) {
    inspection.snapshots.push_back({commit, 0, 0, ++generation, false, 0, 0, 0, 0, 0, 0, 0, 0, {}});
  }
  inspection.branches = {{{0x09}, {{0x09}, {0x01}}}, {{0x03}, {}}};
  const InspectionDocument document = InspectionDocument::from(inspection);
  std::vector<std::uint64_t> generations;
  for (const SnapshotDocument& snapshot : document.snapshots) generations.push_back(snapshot.generation);
  EXPECT_EQ(generations, (std::vector<std::uint64_t>{3, 4, 2, 1, 5}));  // shorter first; equal keep their order
  const auto code = [](std::uint8_t commit) { return selectionCode({}, Bytes{commit}); };
  EXPECT_EQ(document.preservedBranches,
            (std::vector<BranchDocument>{{code(0x03), {}}, {code(0x09), {code(0x09), code(0x01)}}}));
}

TEST(InspectionDocument, PayloadEvidenceIsCompleteOnlyWhenEveryRequiredFileMatched) {
  const std::pair<RecoveryToolPayloadEvidence, bool> cases[] = {
      {{0, 0, 0, 0, 0}, true},  {{3, 3, 0, 0, 0}, true},  {{3, 2, 0, 0, 0}, false},
      {{3, 3, 0, 1, 0}, false}, {{3, 2, 1, 0, 0}, false}, {{3, 2, 0, 0, 1}, false},
  };
  for (const auto& [evidence, complete] : cases) {
    EXPECT_EQ(PayloadEvidenceDocument::from(evidence).complete, complete) << evidence.matchingFileCount;
  }
}

TEST(InspectionDocument, TextThatIsNotUTF8FailsTheDocument) {
  RecoveryToolInspection inspection;
  inspection.formatIdentifier = "com.galdrine.backup.v1\xC0";
  EXPECT_EQ(RecoveryTool::success(InspectionDocument::from(inspection)),
            std::unexpected(RecoveryToolDocumentEncodingError::encodingFailed));
}

}  // namespace

}  // namespace galdrine::recoverytool
