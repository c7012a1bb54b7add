// galdrine-recovery run as a process on packages the package writer made, with the credential
// on redirected standard input: the inspection document, an export of a chosen snapshot read
// back byte for byte, a partial export, and the exit status of every way an export is refused.

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

#include "support/BackupPackageDamage.hpp"
#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "support/ExportTestSupport.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "recoverytool/RecoveryToolSelectionCode.hpp"
#include "support/PseudoTerminal.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::programs {

namespace {

using namespace testsupport::RecoveryTestPackages;
using namespace testsupport::ExportTestSupport;
using Written = writer::BackupWrittenCommit;
using Json = nlohmann::ordered_json;

const std::string program = GALDRINE_RECOVERY_EXECUTABLE;

[[nodiscard]] std::string phraseOf(ByteView key) {
  auto phrase = keys::RecoveryKeyMnemonicV1::phrase(key);
  return phrase ? *phrase + "\n" : std::string();
}

[[nodiscard]] std::string passphraseLine() { return std::string(kPassphrase.begin(), kPassphrase.end()) + "\n"; }

// keysSortedEverywhere: every object of the document lists its keys in sorted order.
[[nodiscard]] bool keysSortedEverywhere(const Json& value) {
  if (value.is_array()) return std::ranges::all_of(value, keysSortedEverywhere);
  if (!value.is_object()) return true;
  std::vector<std::string> keys;
  for (const auto& [key, member] : value.items()) {
    if (!keysSortedEverywhere(member)) return false;
    keys.push_back(key);
  }
  return std::ranges::is_sorted(keys);
}

// The packages are written once for the whole suite: a passphrase envelope costs an Argon2id run.
class RecoveryProgramExportTest : public testing::Test {
 protected:
  struct Packages {
    testsupport::TemporaryDirectory directory;
    writer::BackupLibrarySnapshot olderLibrary = testsupport::BackupSampleLibrary::make({.seed = 11});
    writer::BackupLibrarySnapshot newerLibrary = library(12, 3, 1);
    Writer writer = createWithBothFactors(directory / "Library.galdrine");
    Written older = writeOrAbort(olderLibrary);
    Written newer = writeOrAbort(newerLibrary);

    Written writeOrAbort(const writer::BackupLibrarySnapshot& content) {
      auto written = writer.writeCommit(content);
      if (!written) std::abort();
      return std::move(*written);
    }
  };

  static void SetUpTestSuite() { packages_ = std::make_unique<Packages>(); }
  static void TearDownTestSuite() { packages_.reset(); }

  [[nodiscard]] static fs::path packagePath() { return packages_->directory / "Library.galdrine"; }
  [[nodiscard]] static std::string codeOf(const Written& written) {
    return recoverytool::RecoveryTool::selectionCode(packages_->writer.package().header().packageIdentifier(),
                                                 bytesOf(written.commitIdentifier));
  }

  [[nodiscard]] static testsupport::ProgramRun run(const std::vector<std::string>& arguments, const std::string& standardInput) {
    return testsupport::runProgram(program, arguments, standardInput);
  }
  [[nodiscard]] static testsupport::ProgramRun exportRun(const fs::path& package, const std::string& code, const fs::path& destination,
                                            const std::string& factor, const std::string& credential) {
    return run({"export", package.string(), "--snapshot", code, "--destination", destination.string(), factor,
                "--credential-stdin"},
               credential);
  }

  static inline std::unique_ptr<Packages> packages_;
  testsupport::TemporaryDirectory scratch_;
};

TEST_F(RecoveryProgramExportTest, InspectionIsOneSortedDocumentWithoutIdentifiersOrPaths) {
  const testsupport::ProgramRun byKey = run({"inspect", packagePath().string(), "--recovery-key", "--credential-stdin"}, phraseOf(kRecoveryKey));
  ASSERT_EQ(byKey.exitStatus, 0) << byKey.standardError;
  EXPECT_EQ(byKey.standardError, "");
  EXPECT_TRUE(byKey.standardOutput.ends_with("}\n") && !byKey.standardOutput.ends_with("\n\n"));
  const Json document = Json::parse(byKey.standardOutput);
  EXPECT_TRUE(keysSortedEverywhere(document));
  EXPECT_EQ(document["unlockedFactor"], "recovery-key");
  EXPECT_EQ(document["branchDisposition"], "single-branch");
  ASSERT_EQ(document["snapshots"].size(), 2u);
  std::vector<std::string> codes;
  for (const auto& snapshot : document["snapshots"]) codes.push_back(snapshot["selectionCode"]);
  std::ranges::sort(codes);
  std::vector<std::string> expectedCodes{codeOf(packages_->older), codeOf(packages_->newer)};
  std::ranges::sort(expectedCodes);
  EXPECT_EQ(codes, expectedCodes);

  std::vector<std::string> secrets{ByteText::lowerHex(packages_->writer.package().header().packageIdentifier()),
                                   ByteText::lowerHex(packages_->writer.libraryDomainIdentifier()),
                                   packagePath().string(), packages_->directory.path().filename().string()};
  for (const Written* written : {&packages_->older, &packages_->newer}) {
    secrets.push_back(ByteText::lowerHex(written->commitIdentifier));
    secrets.push_back(ByteText::lowerHex(written->snapshot.identifier()));
  }
  for (const std::string& secret : secrets) EXPECT_FALSE(byKey.standardOutput.contains(secret)) << secret;

  const testsupport::ProgramRun byPassphrase =
      run({"inspect", "--backup-passphrase", packagePath().string(), "--credential-stdin"}, passphraseLine());
  ASSERT_EQ(byPassphrase.exitStatus, 0) << byPassphrase.standardError;
  Json passphraseDocument = Json::parse(byPassphrase.standardOutput);
  EXPECT_EQ(passphraseDocument["unlockedFactor"], "backup-passphrase");
  passphraseDocument["unlockedFactor"] = "recovery-key";
  EXPECT_EQ(passphraseDocument, document);
}

TEST_F(RecoveryProgramExportTest, AnExportOfAChosenSnapshotIsItsMediaByteForByte) {
  const struct {
    const Written* written;
    const writer::BackupLibrarySnapshot* library;
    std::string factor;
    std::string credential;
  } exports[] = {{&packages_->older, &packages_->olderLibrary, "--recovery-key", phraseOf(kRecoveryKey)},
                 {&packages_->newer, &packages_->newerLibrary, "--backup-passphrase", passphraseLine()}};
  for (const auto& chosen : exports) {
    const fs::path destination = scratch_ / ("Recovered" + chosen.factor);
    const std::string code = codeOf(*chosen.written);
    const testsupport::ProgramRun result = exportRun(packagePath(), code, destination, chosen.factor, chosen.credential);
    ASSERT_EQ(result.exitStatus, 0) << result.standardError;
    const auto items = static_cast<std::int64_t>(chosen.library->items.size());
    const auto resources = static_cast<std::int64_t>(chosen.written->resources.size());
    const Json expected = {{"failedResourceCount", 0},         {"recoveredItemCount", items},
                           {"recoveredResourceCount", resources}, {"schemaIdentifier", "com.galdrine.recovery.cli-export.v1"},
                           {"selectedSnapshotCode", code},     {"status", "completed"},
                           {"totalItemCount", items},          {"totalResourceCount", resources}};
    EXPECT_EQ(Json::parse(result.standardOutput), expected);
    EXPECT_TRUE(result.standardOutput.ends_with("}\n") && !result.standardOutput.ends_with("\n\n"));

    const auto exported = readExport(destination);
    ASSERT_TRUE(exported.has_value());
    expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(*chosen.library));
    EXPECT_EQ(exported->allItemsNames.size(), chosen.written->resources.size());
    EXPECT_EQ(exported->mapping.selectedCommitIdentifier, ByteText::lowerHex(chosen.written->commitIdentifier));
    EXPECT_EQ(exported->report.status, "completed");
    EXPECT_TRUE(exported->mappingText.ends_with('}') && exported->reportText.ends_with('}'));
  }
}

TEST_F(RecoveryProgramExportTest, MissingMediaCompleteWithIssuesAndExactCounts) {
  const fs::path package = scratch_ / "Damaged.galdrine";
  Writer writer = createWithRecoveryKey(package);
  const auto content = library(21, 3, 1);
  auto written = writer.writeCommit(content);
  ASSERT_TRUE(written.has_value());
  const auto video = std::ranges::find_if(written->resources, [](const auto& resource) { return resource.partFiles.size() > 1; });
  ASSERT_NE(video, written->resources.end());
  ASSERT_TRUE(testsupport::BackupPackageDamage::damagePayload(*written, video->identifier, testsupport::BackupFileDamage::remove, 1));

  const std::string code = recoverytool::RecoveryTool::selectionCode(writer.package().header().packageIdentifier(),
                                                                 bytesOf(written->commitIdentifier));
  const testsupport::ProgramRun result = exportRun(package, code, scratch_ / "Recovered", "--recovery-key", phraseOf(kRecoveryKey));
  ASSERT_EQ(result.exitStatus, 0) << result.standardError;
  const Json document = Json::parse(result.standardOutput);
  EXPECT_EQ(document["status"], "completed-with-issues");
  EXPECT_EQ(document["totalItemCount"], 4);
  EXPECT_EQ(document["recoveredItemCount"], 3);
  EXPECT_EQ(document["totalResourceCount"], 4);
  EXPECT_EQ(document["recoveredResourceCount"], 3);
  EXPECT_EQ(document["failedResourceCount"], 1);

  const auto exported = readExport(scratch_ / "Recovered");
  ASSERT_TRUE(exported.has_value());
  expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(content));
  ASSERT_EQ(exported->report.failures.size(), 1u);
  EXPECT_EQ(exported->report.failures.front().reason, "missing-payload");
  EXPECT_EQ(exported->report.failures.front().resourceIdentifier, ByteText::lowerHex(video->identifier));
}

TEST_F(RecoveryProgramExportTest, EachRefusalEndsWithItsStatusAndLeavesNothingBehind) {
  const fs::path root = scratch_.path();
  testsupport::FileFixtures::makeDirectory(root / "existing");
  testsupport::FileFixtures::writeFile(root / "existing" / "kept", "kept");
  testsupport::FileFixtures::makeDirectory(root / "empty");
  testsupport::FileFixtures::makeSymbolicLink(root / "nowhere", root / "dangling");
  testsupport::FileFixtures::makeDirectory(root / "real");
  testsupport::FileFixtures::makeSymbolicLink(root / "real", root / "untrusted");
  ASSERT_EQ(::lchown((root / "untrusted").c_str(), 1000, 1000), 0);
  const std::vector<std::string> before = entryNames(root);

  const std::string words = phraseOf(kRecoveryKey);
  Bytes otherKey = kRecoveryKey;
  otherKey[5] ^= 0x10;
  const std::string older = codeOf(packages_->older);
  const std::string unlockFailed = "The portable credential did not unlock the backup.\n";
  const std::string exists = "The recovery destination already exists.\n";
  const std::string unavailable = "The recovery destination is unavailable.\n";
  const struct {
    const char* name;
    std::string factor;
    std::string credential;
    std::string code;
    fs::path destination;
    int exitStatus;
    std::string text;
  } refusals[] = {
      {"another recovery key", "--recovery-key", phraseOf(otherKey), older, root / "out", 4, unlockFailed},
      {"a word off the list", "--recovery-key", "zzzz " + words, older, root / "out", 3, "The portable credential is invalid.\n"},
      {"a wrong passphrase", "--backup-passphrase", "lantern orchard 47 quietly drifting!\n", older, root / "out", 4,
       unlockFailed},
      {"an unknown selection code", "--recovery-key", words, std::string(64, 'a'), root / "out", 4,
       "The selected snapshot is not present in the current authenticated inspection. Run inspect again.\n"},
      {"an existing directory", "--recovery-key", words, older, root / "existing", 5, exists},
      {"an empty directory", "--recovery-key", words, older, root / "empty", 5, exists},
      {"a dangling link", "--recovery-key", words, older, root / "dangling", 5, exists},
      {"a missing parent", "--recovery-key", words, older, root / "absent" / "out", 5, unavailable},
      {"a parent behind a link of another user", "--recovery-key", words, older, root / "untrusted" / "out", 5, unavailable},
  };
  for (const auto& refusal : refusals) {
    const testsupport::ProgramRun result = exportRun(packagePath(), refusal.code, refusal.destination, refusal.factor, refusal.credential);
    EXPECT_EQ(result.exitStatus, refusal.exitStatus) << refusal.name;
    EXPECT_EQ(result.standardError, refusal.text) << refusal.name;
    EXPECT_EQ(result.standardOutput, "") << refusal.name;
    EXPECT_EQ(entryNames(root), before) << refusal.name;
  }
  EXPECT_EQ(entryNames(root / "existing"), std::vector<std::string>{"kept"});
  EXPECT_TRUE(entryNames(root / "empty").empty() && entryNames(root / "real").empty());
}

}  // namespace

}  // namespace galdrine::programs
