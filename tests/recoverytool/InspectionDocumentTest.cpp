#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "recoverytool/RecoveryToolDocumentOutput.hpp"
#include "recoverytool/RecoveryToolSelectionCode.hpp"

namespace galdrine::recoverytool {

namespace {

using RecoveryTool::selectionCode;

const Bytes packageIdentifier{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

RecoveryToolSnapshot snapshotAt(Bytes commitIdentifier, std::uint64_t generation) {
  RecoveryToolSnapshot snapshot;
  snapshot.commitIdentifier = std::move(commitIdentifier);
  snapshot.generation = generation;
  return snapshot;
}

std::string outputText(const InspectionDocument& document) {
  const auto execution = RecoveryTool::success(document);
  EXPECT_TRUE(execution.has_value());
  if (!execution) return {};
  EXPECT_EQ(execution->exitCode, 0);
  EXPECT_TRUE(execution->standardError.empty());
  return std::string(execution->standardOutput.begin(), execution->standardOutput.end());
}

// Every object of the text, at every depth, lists its keys in ascending order.
void expectSortedKeys(const nlohmann::ordered_json& json) {
  if (json.is_object()) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items()) {
      keys.push_back(key);
      expectSortedKeys(value);
    }
    EXPECT_TRUE(std::ranges::is_sorted(keys));
  } else if (json.is_array()) {
    for (const auto& element : json) expectSortedKeys(element);
  }
}

TEST(RecoveryToolSelectionCode, IsTheDigestOfLabelPackageAndCommit) {
  Bytes commit(16);
  for (std::uint8_t index = 0; index < 16; ++index) commit[index] = static_cast<std::uint8_t>(16 + index);
  EXPECT_EQ(selectionCode(packageIdentifier, commit), "56937ce7ba1f179291352fb14c4a60a2ca65479fa0406104cf36109a3f7a5528");
  EXPECT_NE(selectionCode(packageIdentifier, commit), selectionCode(Bytes(16, 0), commit));
  EXPECT_TRUE(RecoveryTool::validSelectionCode(selectionCode(packageIdentifier, commit)));
  for (const std::string& invalid : {std::string(63, '0'), std::string(65, '0'), std::string(64, 'A'),
                                     std::string(63, '0') + "g", std::string(63, '0') + " ", std::string()}) {
    EXPECT_FALSE(RecoveryTool::validSelectionCode(invalid)) << invalid;
  }
}

TEST(InspectionDocument, OrdersSnapshotsAndBranchesByIdentifierBytes) {
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  inspection.snapshots = {snapshotAt({0x02}, 1), snapshotAt({0x01, 0x00}, 2), snapshotAt({0x01}, 3),
                          snapshotAt({0x01}, 4), snapshotAt({0xFF}, 5)};
  inspection.branches = {{{0x09}, {{0x09}, {0x01}, {0x05}}}, {{0x03}, {{0x03}}}};
  const InspectionDocument document = InspectionDocument::from(inspection);

  std::vector<std::uint64_t> generations;
  for (const SnapshotDocument& snapshot : document.snapshots) generations.push_back(snapshot.generation);
  EXPECT_EQ(generations, (std::vector<std::uint64_t>{3, 4, 2, 1, 5}));  // shorter first; equal keep their order
  EXPECT_EQ(document.snapshots[0].selectionCode, selectionCode(packageIdentifier, Bytes{0x01}));
  ASSERT_EQ(document.preservedBranches.size(), 2u);
  EXPECT_EQ(document.preservedBranches[0].tipSelectionCode, selectionCode(packageIdentifier, Bytes{0x03}));
  EXPECT_EQ(document.preservedBranches[1].snapshotSelectionCodes,
            (std::vector<std::string>{selectionCode(packageIdentifier, Bytes{0x09}), selectionCode(packageIdentifier, Bytes{0x01}),
                                      selectionCode(packageIdentifier, Bytes{0x05})}));
}

TEST(InspectionDocument, DispositionNamesTheCanonicalTipOnlyWhenThereIsOne) {
  const Bytes tip(16, 0x44);
  const struct {
    RecoveryToolBranchDisposition disposition;
    const char* text;
    bool hasTip;
  } cases[] = {
      {RecoveryToolBranchDisposition::canonicalizedBranches(tip), "canonicalized-branches", true},
      {RecoveryToolBranchDisposition::noPublishedHead(), "no-published-head", false},
      {RecoveryToolBranchDisposition::singleBranch(), "single-branch", false},
      {RecoveryToolBranchDisposition::unresolvedFork(), "unresolved-fork", false},
  };
  for (const auto& testCase : cases) {
    RecoveryToolInspection inspection;
    inspection.packageIdentifier = packageIdentifier;
    inspection.branchDisposition = testCase.disposition;
    const auto json = nlohmann::json::parse(outputText(InspectionDocument::from(inspection)));
    EXPECT_EQ(json["branchDisposition"], testCase.text);
    EXPECT_EQ(json.contains("canonicalTipSelectionCode"), testCase.hasTip) << testCase.text;
    if (testCase.hasTip) {
      EXPECT_EQ(json["canonicalTipSelectionCode"], selectionCode(packageIdentifier, tip));
    }
  }
}

TEST(InspectionDocument, PayloadEvidenceIsCompleteOnlyWhenEveryFileMatched) {
  const struct {
    RecoveryToolPayloadEvidence evidence;
    bool complete;
  } cases[] = {
      {{0, 0, 0, 0, 0}, true},
      {{3, 3, 0, 0, 0}, true},
      {{3, 2, 0, 1, 0}, false},
      {{3, 3, 0, 1, 0}, false},
      {{3, 2, 1, 0, 0}, false},
      {{3, 2, 0, 0, 1}, false},
      {{3, 2, 0, 0, 0}, false},
  };
  for (const auto& testCase : cases) {
    const PayloadEvidenceDocument document = PayloadEvidenceDocument::from(testCase.evidence);
    EXPECT_EQ(document.complete, testCase.complete) << testCase.evidence.matchingFileCount;
    EXPECT_EQ(document.mismatchedFileCount, testCase.evidence.mismatchedFileCount);
  }
}

TEST(InspectionDocument, PrintsEveryFieldAsSortedJSONWithOneFinalLineFeed) {
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  inspection.formatIdentifier = "com.galdrine/backup ü \x01";
  inspection.formatVersion = 1;
  inspection.unlockedFactor = envelope::PortableKeyFactorV1::recoveryKey;
  inspection.branchDisposition = RecoveryToolBranchDisposition::singleBranch();
  RecoveryToolSnapshot snapshot{Bytes(16, 0x55), -1, 18446744073709551615u, 2, true, 3, 4, 5, 6, 7, 8, 9, 10, {1, 1, 0, 0, 0}};
  inspection.snapshots = {snapshot};
  inspection.branches = {{Bytes(16, 0x55), {Bytes(16, 0x55)}}};
  inspection.authenticatedCommitCount = 11;
  inspection.authenticatedHeadCount = 12;
  inspection.maximumWriterEpoch = 13;

  const std::string output = outputText(InspectionDocument::from(inspection));
  ASSERT_TRUE(output.ends_with("}\n"));
  EXPECT_FALSE(output.ends_with("\n\n"));
  EXPECT_NE(output.find("com.galdrine/backup ü \\u0001"), std::string::npos) << output;
  EXPECT_EQ(output.find("\\/"), std::string::npos);
  EXPECT_EQ(output.find(ByteText::lowerHex(packageIdentifier)), std::string::npos);
  EXPECT_EQ(output.find(ByteText::lowerHex(Bytes(16, 0x55))), std::string::npos);
  expectSortedKeys(nlohmann::ordered_json::parse(output));

  const std::string code = selectionCode(packageIdentifier, Bytes(16, 0x55));
  const nlohmann::json expected = {
      {"schemaIdentifier", "com.galdrine.recovery.cli-inspection.v1"},
      {"formatIdentifier", "com.galdrine/backup ü \x01"},
      {"formatVersion", 1},
      {"unlockedFactor", "recovery-key"},
      {"branchDisposition", "single-branch"},
      {"authenticatedCommitCount", 11},
      {"authenticatedHeadCount", 12},
      {"maximumWriterEpoch", 13},
      {"preservedBranches", {{{"tipSelectionCode", code}, {"snapshotSelectionCodes", {code}}}}},
      {"snapshots",
       {{{"selectionCode", code},
         {"createdAtUTCMilliseconds", -1},
         {"writerEpoch", 18446744073709551615u},
         {"generation", 2},
         {"retainedTip", true},
         {"counts", {{"items", 3}, {"resources", 4}, {"folders", 5}, {"albums", 6}, {"memberships", 7}, {"tombstones", 8}}},
         {"logicalPlaintextByteCount", 9},
         {"encryptedPayloadByteCount", 10},
         {"payloadFileEvidence",
          {{"complete", true},
           {"requiredFileCount", 1},
           {"matchingFileCount", 1},
           {"missingFileCount", 0},
           {"mismatchedFileCount", 0},
           {"unreadableFileCount", 0}}}}}}};
  EXPECT_EQ(nlohmann::json::parse(output), expected);
}

TEST(InspectionDocument, AnEmptyPackageKeepsBothLists) {
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  const auto json = nlohmann::json::parse(outputText(InspectionDocument::from(inspection)));
  EXPECT_EQ(json["snapshots"], nlohmann::json::array());
  EXPECT_EQ(json["preservedBranches"], nlohmann::json::array());
  EXPECT_FALSE(json.contains("canonicalTipSelectionCode"));
}

TEST(InspectionDocument, TextThatIsNotUTF8FailsTheDocument) {
  RecoveryToolInspection inspection;
  inspection.formatIdentifier = "com.galdrine.backup.v1\xC0";
  EXPECT_EQ(RecoveryTool::success(InspectionDocument::from(inspection)),
            std::unexpected(RecoveryToolDocumentEncodingError::encodingFailed));
}

}  // namespace

}  // namespace galdrine::recoverytool
