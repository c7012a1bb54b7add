// The driver against a credential reader and a backend that answer as a test tells them:
// every outcome with its status and text, the credential's bound, its wiping on every way out,
// and the snapshot an export selects by its code.

#include "recoverytool/RecoveryTool.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "recoverytool/RecoveryToolSelectionCode.hpp"
#include "recoverytool/RecoveryToolUsage.hpp"
#include "support/ReleasedSecretScan.hpp"

namespace galdrine::recoverytool {

namespace {

using Arguments = std::vector<std::string>;
using Factor = envelope::PortableKeyFactorV1;
using Input = credential::CredentialInput;
using enum RecoveryToolError;

const std::string marker = "QZXJ-driver-credential-marker";
const Bytes packageIdentifier(16, 0x01);
const Bytes firstCommit(16, 0x11);
const std::string firstCode = RecoveryTool::selectionCode(packageIdentifier, firstCommit);

RecoveryToolInspection inspectionOf(const std::vector<Bytes>& commits) {
  RecoveryToolInspection inspection;
  inspection.packageIdentifier = packageIdentifier;
  for (const Bytes& commit : commits) inspection.snapshots.emplace_back().commitIdentifier = commit;
  return inspection;
}

class FakeCredentialReader final : public credential::CredentialReading {
 public:
  std::optional<std::string> credential = marker;                  // nothing: the read fails
  std::optional<std::tuple<Factor, Input, std::int64_t>> request;  // what the one read asked for

  std::expected<Bytes, credential::CredentialReadingFailure> read(Factor factor, Input input,
                                                                  std::int64_t maximum) override {
    request = {factor, input, maximum};
    if (!credential) return std::unexpected(credential::CredentialReadingFailure{});
    return ByteText::bytes(*credential);
  }
};

class FakeBackend final : public RecoveryToolBackend {
 public:
  std::expected<RecoveryToolInspection, RecoveryToolError> inspection = inspectionOf({firstCommit});
  std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportResult = recovery::RecoveryExportResult{};
  std::vector<std::tuple<std::filesystem::path, Factor, Bytes>> calls;  // package, factor and credential of each call
  Bytes selectedCommitIdentifier;
  std::filesystem::path destinationPath;

  std::expected<RecoveryToolInspection, RecoveryToolError> inspect(const std::filesystem::path& path, Factor factor,
                                                                   ByteView credential) override {
    calls.emplace_back(path, factor, Bytes(credential.begin(), credential.end()));
    return inspection;
  }

  std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& path, Factor factor, ByteView credential, ByteView commitIdentifier,
      const std::filesystem::path& destination) override {
    calls.emplace_back(path, factor, Bytes(credential.begin(), credential.end()));
    selectedCommitIdentifier.assign(commitIdentifier.begin(), commitIdentifier.end());
    destinationPath = destination;
    return exportResult;
  }
};

const Arguments inspectArguments{"inspect", "/p/a.galdrine", "--recovery-key", "--credential-stdin"};

Arguments exportArguments(const std::string& code) {
  return {"export", "/p/a.galdrine", "--snapshot", code, "--destination", "/out/new", "--backup-passphrase"};
}

struct DriverRun {
  FakeCredentialReader reader;
  FakeBackend backend;
  RecoveryToolExecution execute(const Arguments& arguments) {
    return RecoveryTool::execute(arguments, reader, backend);
  }
};

// Each run: its status and standard error, that a misuse asks for no credential, that the
// backend sees the credential as read, and that no block holding it is given back unwiped.
TEST(RecoveryTool, EveryRunEndsInItsStatusAndTextAndWipesTheCredential) {
  testsupport::ReleasedSecretScan::arm(marker);
  { const Bytes copy = ByteText::bytes(marker); }
  ASSERT_EQ(testsupport::ReleasedSecretScan::disarm(), 1);  // the scan sees an unwiped release

  const std::string usage(recoveryToolUsageText);
  const std::string invalid = "The portable credential is invalid.\n";
  const std::string unlock = "The portable credential did not unlock the backup.\n";
  const struct {
    Arguments arguments;
    std::optional<RecoveryToolError> inspectError;
    std::optional<RecoveryToolError> exportError;
    std::int32_t exitCode;
    std::string text;
    std::optional<std::string> credential = marker;
  } cases[] = {
      {inspectArguments, {}, {}, 0, ""},
      {exportArguments(firstCode), {}, {}, 0, ""},
      {{"help", "inspect"}, {}, {}, 2, usage},
      {exportArguments(std::string(64, 'A')), {}, {}, 2, usage},
      {{"--backup-passphrase=x", "inspect", "a", "--app-code=1"},
       {},
       {},
       2,
       "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n"},
      {{"inspect", "a", "--backup-passphrase=x"},
       {},
       {},
       2,
       "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n"},
      {{"verify-golden", "no-such-golden.json"}, {}, {}, 4, "Galdrine compatibility verification failed.\n"},
      {inspectArguments, {}, {}, 3, "The credential could not be read securely.\n", std::nullopt},
      {inspectArguments, {}, {}, 3, invalid, ""},
      {inspectArguments, {}, {}, 3, invalid, marker + std::string(16384 - marker.size() + 1, 'k')},
      {inspectArguments, unlockFailed, {}, 4, unlock, marker + std::string(16384 - marker.size(), 'k')},
      {inspectArguments, unlockFailed, {}, 4, unlock, std::string("\0\xFF\r\n\x80", 5)},
      {inspectArguments, invalidCredential, {}, 3, invalid},
      {inspectArguments, invalidPackage, {}, 4, "The backup package is invalid or unsupported.\n"},
      {inspectArguments, packageUnavailable, {}, 4, "The backup package is unavailable.\n"},
      {inspectArguments, resourceLimitExceeded, {}, 4, "The backup exceeds safe recovery limits.\n"},
      {exportArguments(firstCode), integrityFailure, {}, 4, "Backup integrity verification failed.\n"},
      {exportArguments(firstCode), operationFailed, {}, 4, "Galdrine recovery operation failed safely.\n"},
      {exportArguments(std::string(64, '0')),
       {},
       {},
       4,
       "The selected snapshot is not present in the current authenticated inspection. Run inspect again.\n"},
      {exportArguments(firstCode), {}, destinationExists, 5, "The recovery destination already exists.\n"},
      {exportArguments(firstCode), {}, destinationUnavailable, 5, "The recovery destination is unavailable.\n"},
      {exportArguments(firstCode), {}, outputWriteFailed, 5, "Recovery output could not be written safely.\n"},
  };
  for (const auto& testCase : cases) {
    DriverRun run;
    run.reader.credential = testCase.credential;
    if (testCase.inspectError) run.backend.inspection = std::unexpected(*testCase.inspectError);
    if (testCase.exportError) run.backend.exportResult = std::unexpected(*testCase.exportError);
    testsupport::ReleasedSecretScan::arm(marker);
    const RecoveryToolExecution execution = run.execute(testCase.arguments);
    EXPECT_EQ(testsupport::ReleasedSecretScan::disarm(), 0) << testCase.text;
    EXPECT_EQ(execution.exitCode, testCase.exitCode) << testCase.text;
    EXPECT_EQ(ByteText::text(execution.standardError), testCase.text);
    EXPECT_EQ(execution.standardOutput.empty(), testCase.exitCode != 0) << testCase.text;
    const bool reads =
        testCase.exitCode != 2 && (testCase.arguments[0] == "inspect" || testCase.arguments[0] == "export");
    EXPECT_EQ(run.reader.request.has_value(), reads) << testCase.text;
    for (const auto& [path, factor, credential] : run.backend.calls) {
      EXPECT_EQ(path, std::filesystem::path("/p/a.galdrine"));
      EXPECT_EQ(credential, ByteText::bytes(testCase.credential.value_or(""))) << testCase.text;
    }
  }
}

TEST(RecoveryTool, ExportUnlocksTwiceWithTheSelectedCommitAndPrintsItsDocument) {
  DriverRun run;
  run.backend.inspection = inspectionOf({Bytes(16, 0x22), firstCommit});
  run.backend.exportResult = recovery::RecoveryExportResult{
      "/out/new", firstCommit, Bytes(16, 0x33), recovery::RecoveryExportStatus::completedWithIssues, 5, 4, 7, 6, 1};
  const RecoveryToolExecution execution = run.execute(exportArguments(firstCode));
  EXPECT_EQ(run.reader.request, std::tuple(Factor::backupPassphrase, Input::hiddenTerminal, std::int64_t{16384}));
  EXPECT_EQ(run.backend.calls.size(), 2u);
  EXPECT_EQ(std::get<Factor>(run.backend.calls.back()), Factor::backupPassphrase);
  EXPECT_EQ(run.backend.selectedCommitIdentifier, firstCommit);
  EXPECT_EQ(run.backend.destinationPath, std::filesystem::path("/out/new"));
  ASSERT_EQ(execution.exitCode, 0);
  const std::string output(ByteText::text(execution.standardOutput));
  EXPECT_EQ(output, nlohmann::json::parse(output).dump(2) + "\n");  // the documents' one text form
  EXPECT_EQ(nlohmann::json::parse(output),
            nlohmann::json::parse(R"({"schemaIdentifier": "com.galdrine.recovery.cli-export.v1",
              "status": "completed-with-issues",
              "selectedSnapshotCode": ")" +
                                  firstCode + R"(", "totalItemCount": 5, "recoveredItemCount": 4,
              "totalResourceCount": 7, "recoveredResourceCount": 6, "failedResourceCount": 1})"));
}

}  // namespace

}  // namespace galdrine::recoverytool
