#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "recoverytool/RecoveryToolSelectionCode.hpp"
#include "recoverytool/RecoveryTool.hpp"
#include "recoverytool/RecoveryToolFailureOutput.hpp"
#include "recoverytool/RecoveryToolUsage.hpp"
#include "RecoveryToolFakes.hpp"

namespace galdrine::recoverytool {

namespace {

using Arguments = std::vector<std::string>;
using enum RecoveryToolError;

const Bytes packageIdentifier{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
const Bytes firstCommit(16, 0x11);
const Bytes secondCommit(16, 0x22);
const std::string firstCode = RecoveryTool::selectionCode(packageIdentifier, firstCommit);

Arguments inspectArguments() { return {"inspect", "/p/a.galdrine", "--recovery-key", "--credential-stdin"}; }

Arguments exportArguments(const std::string& code) {
  return {"export", "/p/a.galdrine", "--snapshot", code, "--destination", "/out/new", "--backup-passphrase"};
}

RecoveryToolSnapshot snapshotAt(const Bytes& commitIdentifier) {
  RecoveryToolSnapshot snapshot;
  snapshot.commitIdentifier = commitIdentifier;
  return snapshot;
}

RecoveryToolInspection twoSnapshotInspection() {
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  inspection.formatIdentifier = "com.galdrine.backup.v1";
  inspection.formatVersion = 1;
  inspection.snapshots = {snapshotAt(secondCommit), snapshotAt(firstCommit)};
  return inspection;
}

std::string text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

RecoveryToolExecution failed(RecoveryToolError error) {
  const RecoveryToolFailureOutput output = failureOutput(error);
  return {output.exitCode, {}, ByteText::bytes(output.standardError)};
}

struct DriverRun {
  FakeCredentialReader reader;
  FakeBackend backend;
  RecoveryToolExecution execute(const Arguments& arguments) {
    (void)ReleasedBlockWatch::takeReport();
    return RecoveryTool::execute(arguments, reader, backend);
  }
};

TEST(RecoveryTool, HelpAndSelfTestNeedNoCredential) {
  DriverRun run;
  const RecoveryToolExecution selfTest{0, ByteText::bytes("Galdrine recovery self-test passed for com.galdrine.backup.v1.\n"), {}};
  EXPECT_EQ(run.execute({}), selfTest);
  EXPECT_EQ(run.execute({"self-test"}), selfTest);
  for (const char* word : {"help", "--help", "-h"}) {
    EXPECT_EQ(run.execute({word}), (RecoveryToolExecution{0, ByteText::bytes(recoveryToolUsageText), {}}));
  }
  EXPECT_EQ(run.reader.readCount, 0);
}

TEST(RecoveryTool, MisuseEndsBeforeAnyCredentialIsAskedFor) {
  const std::string upperCode(64, 'F');
  const struct {
    Arguments arguments;
    RecoveryToolError expected;
  } cases[] = {
      {{"help", "inspect"}, invalidArguments},
      {{"inspect", "a.galdrine"}, invalidArguments},
      {{"inspect", "a.galdrine", "--recovery-key", "--recovery-key"}, invalidArguments},
      {{"export", "a", "--snapshot", upperCode, "--destination", "d", "--recovery-key"}, invalidArguments},
      {{"export", "a", "--snapshot", std::string(63, 'a'), "--destination", "d", "--recovery-key"}, invalidArguments},
      {{"inspect", "a", "--backup-passphrase=secret"}, credentialInArguments},
      {{"--backup-passphrase=x", "inspect", "a", "--app-code=1234"}, appCodeForbidden},
  };
  for (const auto& misuse : cases) {
    DriverRun run;
    EXPECT_EQ(run.execute(misuse.arguments), failed(misuse.expected)) << misuse.arguments.size();
    EXPECT_EQ(run.reader.readCount, 0);
    EXPECT_EQ(run.backend.inspectCount, 0);
  }
}

TEST(RecoveryTool, VerificationOfMissingFixturesIsACompatibilityFailure) {
  DriverRun run;
  EXPECT_EQ(run.execute({"verify-golden", "no-such-golden.json"}), failed(compatibilityVerificationFailed));
  EXPECT_EQ(run.execute({"verify-fixtures", "no-such-index.json"}), failed(compatibilityVerificationFailed));
  EXPECT_EQ(run.reader.readCount, 0);
}

TEST(RecoveryTool, CredentialIsBoundedAndPassedOnUnchanged) {
  const struct {
    const char* name;
    std::optional<Bytes> credential;
    std::optional<RecoveryToolError> expected;
  } cases[] = {
      {"exactly the bound", Bytes(16384, 0x7A), std::nullopt},
      {"one byte over the bound", Bytes(16385, 0x7A), invalidCredential},
      {"empty", Bytes{}, invalidCredential},
      {"reader failure", std::nullopt, credentialUnavailable},
      {"raw bytes", Bytes{0x00, 0xFF, '\r', '\n', 0x80}, std::nullopt},
  };
  for (const auto& testCase : cases) {
    DriverRun run;
    run.reader.credential = testCase.credential;
    run.backend.inspection = std::unexpected(unlockFailed);
    const RecoveryToolExecution execution = run.execute(inspectArguments());
    EXPECT_EQ(run.reader.readCount, 1) << testCase.name;
    EXPECT_EQ(run.reader.factor, envelope::PortableKeyFactorV1::recoveryKey);
    EXPECT_EQ(run.reader.input, credential::CredentialInput::standardInput);
    EXPECT_EQ(run.reader.maximumByteCount, 16384);
    if (testCase.expected) {
      EXPECT_EQ(execution, failed(*testCase.expected)) << testCase.name;
      EXPECT_EQ(run.backend.inspectCount, 0) << testCase.name;
    } else {
      EXPECT_EQ(execution, failed(unlockFailed)) << testCase.name;
      ASSERT_EQ(run.backend.credentialsSeen.size(), 1u) << testCase.name;
      EXPECT_EQ(run.backend.credentialsSeen[0], *testCase.credential) << testCase.name;
      EXPECT_EQ(run.backend.packagePath, std::filesystem::path("/p/a.galdrine"));
    }
  }
}

TEST(RecoveryTool, CredentialIsWipedOnEveryRoad) {
  RecoveryToolInspection badText = twoSnapshotInspection();
  badText.formatIdentifier = "\xFF";
  const struct {
    const char* name;
    Arguments arguments;
    Bytes credential;
    std::expected<RecoveryToolInspection, RecoveryToolError> inspection;
    std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportResult;
    std::int32_t exitCode;
  } roads[] = {
      {"inspect", inspectArguments(), Bytes(40, 'k'), twoSnapshotInspection(), {}, 0},
      {"inspect refused", inspectArguments(), Bytes(40, 'k'), std::unexpected(integrityFailure), {}, 4},
      {"document not encodable", inspectArguments(), Bytes(40, 'k'), badText, {}, 4},
      {"over the bound", inspectArguments(), Bytes(16385, 'k'), twoSnapshotInspection(), {}, 3},
      {"export", exportArguments(firstCode), Bytes(40, 'k'), twoSnapshotInspection(), {}, 0},
      {"unknown code", exportArguments(std::string(64, '0')), Bytes(40, 'k'), twoSnapshotInspection(), {}, 4},
      {"export refused", exportArguments(firstCode), Bytes(40, 'k'), twoSnapshotInspection(),
       std::unexpected(destinationExists), 5},
  };
  for (const auto& road : roads) {
    DriverRun run;
    run.reader.credential = road.credential;
    run.backend.inspection = road.inspection;
    run.backend.exportResult = road.exportResult;
    EXPECT_EQ(run.execute(road.arguments).exitCode, road.exitCode) << road.name;
    const ReleasedBlockWatch::Report report = ReleasedBlockWatch::takeReport();
    EXPECT_EQ(report.releasedCount, 1) << road.name;
    EXPECT_EQ(report.releasedUnwipedCount, 0) << road.name;
  }
}

TEST(RecoveryTool, BackendFailuresReachTheUserThroughTheTable) {
  for (const RecoveryToolError error : {invalidCredential, invalidPackage, unlockFailed, packageUnavailable,
                                        resourceLimitExceeded, integrityFailure, operationFailed}) {
    DriverRun run;
    run.backend.inspection = std::unexpected(error);
    EXPECT_EQ(run.execute(inspectArguments()), failed(error));
    EXPECT_EQ(run.execute(exportArguments(firstCode)), failed(error));
    EXPECT_EQ(run.backend.exportCount, 0);
  }
  DriverRun run;
  run.backend.inspection = twoSnapshotInspection();
  for (const RecoveryToolError error : {snapshotSelectionNotFound, destinationUnavailable, outputWriteFailed}) {
    run.backend.exportResult = std::unexpected(error);
    EXPECT_EQ(run.execute(exportArguments(firstCode)), failed(error));
  }
}

TEST(RecoveryTool, UnknownSelectionCodeIsReportedOnlyAfterUnlocking) {
  DriverRun run;
  run.backend.inspection = twoSnapshotInspection();
  const std::string otherPackageCode = RecoveryTool::selectionCode(Bytes(16, 0xEE), firstCommit);
  EXPECT_EQ(run.execute(exportArguments(otherPackageCode)), failed(snapshotSelectionNotFound));
  EXPECT_EQ(run.reader.readCount, 1);
  EXPECT_EQ(run.backend.inspectCount, 1);
  EXPECT_EQ(run.backend.exportCount, 0);

  // A code that two snapshots share selects neither.
  RecoveryToolInspection twice = twoSnapshotInspection();
  twice.snapshots.push_back(snapshotAt(firstCommit));
  run.backend.inspection = twice;
  EXPECT_EQ(run.execute(exportArguments(firstCode)), failed(snapshotSelectionNotFound));
  EXPECT_EQ(run.backend.exportCount, 0);
}

TEST(RecoveryTool, ExportUnlocksWithTheSelectedCommitAndPrintsItsDocument) {
  DriverRun run;
  run.backend.inspection = twoSnapshotInspection();
  recovery::RecoveryExportResult result;
  result.outputPath = "/out/new";
  result.selectedCommitIdentifier = firstCommit;
  result.selectedSnapshotIdentifier = Bytes(16, 0x33);
  result.status = recovery::RecoveryExportStatus::completedWithIssues;
  result.totalItemCount = 5;
  result.recoveredItemCount = 4;
  result.totalResourceCount = 7;
  result.recoveredResourceCount = 6;
  result.failedResourceCount = 1;
  run.backend.exportResult = result;

  const RecoveryToolExecution execution = run.execute(exportArguments(firstCode));
  ASSERT_EQ(execution.exitCode, 0) << text(execution.standardError);
  EXPECT_TRUE(execution.standardError.empty());
  EXPECT_EQ(run.backend.selectedCommitIdentifier, firstCommit);
  EXPECT_EQ(run.backend.destinationPath, std::filesystem::path("/out/new"));
  EXPECT_EQ(run.backend.factor, envelope::PortableKeyFactorV1::backupPassphrase);
  EXPECT_EQ(run.backend.credentialsSeen, (std::vector<Bytes>{{'p', 'w'}, {'p', 'w'}}));
  const nlohmann::json expected = {{"schemaIdentifier", "com.galdrine.recovery.cli-export.v1"},
                                   {"status", "completed-with-issues"},
                                   {"selectedSnapshotCode", firstCode},
                                   {"totalItemCount", 5},
                                   {"recoveredItemCount", 4},
                                   {"totalResourceCount", 7},
                                   {"recoveredResourceCount", 6},
                                   {"failedResourceCount", 1}};
  EXPECT_EQ(nlohmann::json::parse(text(execution.standardOutput)), expected);
  EXPECT_EQ(text(execution.standardOutput).find("/out"), std::string::npos);
}

}  // namespace

}  // namespace galdrine::recoverytool
