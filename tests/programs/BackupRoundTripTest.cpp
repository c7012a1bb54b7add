// The two programs together, as a user runs them: galdrine-backup makes a package of the
// project's sample library, galdrine-recovery inspects it alike with either factor and gives
// every photo and video back byte for byte; every way an export is refused ends in its status
// and text and leaves nothing behind; a snapshot added later is the new tip with the new file.

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "support/ExportTestSupport.hpp"
#include "support/ProgramRunner.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::programs {

namespace {

namespace fs = std::filesystem;
using testsupport::ProgramOutcome;
using testsupport::ExportTestSupport::entryNames;
using Json = nlohmann::json;

const std::string backupProgram = GALDRINE_BACKUP_EXECUTABLE;
const std::string recoveryProgram = GALDRINE_RECOVERY_EXECUTABLE;
const std::string passphraseLine = "lantern orchard 47 quietly drifting\n";

ProgramOutcome run(const std::string& program, const std::vector<std::string>& arguments,
                   const std::string& standardInput = {}) {
  return testsupport::ProgramRunner::run(program, arguments, standardInput);
}

// The media of a directory as the exporter should give them back: the contents of every
// photo and video, in sorted order, since names change on the way (collisions, live pairs).
std::vector<std::string> mediaContents(const fs::path& root) {
  std::vector<std::string> contents;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const fs::path& path = entry.path();
    if (!entry.is_regular_file() || path.filename().string().starts_with(".") || path.extension() == ".txt") continue;
    const Bytes bytes = testsupport::FileFixtures::readFile(path);
    contents.emplace_back(bytes.begin(), bytes.end());
  }
  std::ranges::sort(contents);
  return contents;
}

class BackupRoundTripTest : public testing::Test {
 protected:
  struct Package {
    testsupport::TemporaryDirectory directory;
    fs::path library = directory / "library";
    fs::path package = directory / "Sample.galdrine";
    std::string recoveryKeyLine;
  };

  // One package for the suite: its passphrase envelope costs an Argon2id run.
  static void SetUpTestSuite() {
    shared_ = std::make_unique<Package>();
    const ProgramOutcome drawn = run(GALDRINE_SAMPLE_LIBRARY_SCRIPT, {shared_->library.string()});
    ASSERT_EQ(drawn.exitStatus, 0) << drawn.standardError;
    const ProgramOutcome created = run(backupProgram,
                                       {"create", shared_->package.string(), "--from", shared_->library.string(),
                                        "--backup-passphrase", "--new-recovery-key", "--credential-stdin"},
                                       passphraseLine);
    ASSERT_EQ(created.exitStatus, 0) << created.standardError;
    // The 24 words are shown once: the only line of the output with 24 words.
    using Words = std::istream_iterator<std::string>;
    std::istringstream lines(created.standardOutput);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      if (std::distance(Words(words), Words()) == 24) shared_->recoveryKeyLine = line + "\n";
    }
  }

  // inspect gives the document of an inspection with the recovery key, which names no path.
  static Json inspect() {
    const std::vector<std::string> arguments{"inspect", shared_->package.string(), "--recovery-key",
                                             "--credential-stdin"};
    const ProgramOutcome inspected = run(recoveryProgram, arguments, shared_->recoveryKeyLine);
    EXPECT_EQ(inspected.exitStatus, 0) << inspected.standardError;
    EXPECT_FALSE(inspected.standardOutput.contains(shared_->directory.path().string()));
    return Json::parse(inspected.standardOutput, nullptr, false);
  }

  // tipCode is the canonical tip's code: the tip of the first preserved branch.
  static std::string tipCode(const Json& document) {
    if (!document.contains("preservedBranches")) return {};
    return document["preservedBranches"][0]["tipSelectionCode"].get<std::string>();
  }

  static ProgramOutcome exportRun(const std::string& factor, const std::string& credential, const std::string& code,
                                  const fs::path& destination) {
    return run(recoveryProgram,
               {"export", shared_->package.string(), "--snapshot", code, "--destination", destination.string(), factor,
                "--credential-stdin"},
               credential);
  }

  static inline std::unique_ptr<Package> shared_;
};

TEST_F(BackupRoundTripTest, EachFactorExportsEveryMediaFileByteForByte) {
  ASSERT_FALSE(shared_->recoveryKeyLine.empty());
  const Json byKey = inspect();
  ASSERT_EQ(byKey["snapshots"].size(), 1u);
  EXPECT_EQ(byKey["branchDisposition"], "single-branch");
  EXPECT_EQ(
      byKey["snapshots"][0]["counts"],
      (Json{{"items", 10}, {"resources", 11}, {"folders", 1}, {"albums", 4}, {"memberships", 7}, {"tombstones", 0}}));
  EXPECT_EQ(byKey["snapshots"][0]["payloadFileEvidence"]["complete"], true);

  const auto original = mediaContents(shared_->library);
  ASSERT_EQ(original.size(), 11u);  // ten items, one of them a live photo of two files
  for (const std::string factor : {"--backup-passphrase", "--recovery-key"}) {
    testsupport::TemporaryDirectory output;
    const std::string& credential = factor == "--recovery-key" ? shared_->recoveryKeyLine : passphraseLine;
    const ProgramOutcome exported = exportRun(factor, credential, tipCode(byKey), output / "Recovered");
    ASSERT_EQ(exported.exitStatus, 0) << factor << exported.standardError;
    EXPECT_TRUE(exported.standardOutput.contains("\"status\": \"completed\"")) << factor;
    EXPECT_EQ(mediaContents(output / "Recovered" / "All Items"), original) << factor;
    const std::vector<std::string> published{"All Items", "library-mapping.json", "recovery-report.json"};
    EXPECT_EQ(entryNames(output / "Recovered"), published);
  }
}

TEST_F(BackupRoundTripTest, EachRefusalEndsWithItsStatusAndTextAndLeavesNothingBehind) {
  testsupport::TemporaryDirectory scratch;
  const fs::path root = scratch.path();
  testsupport::FileFixtures::makeDirectory(root / "existing");
  testsupport::FileFixtures::writeFile(root / "existing" / "kept", "kept");
  testsupport::FileFixtures::makeDirectory(root / "empty");
  testsupport::FileFixtures::makeSymbolicLink(root / "nowhere", root / "dangling");
  testsupport::FileFixtures::makeDirectory(root / "real");
  testsupport::FileFixtures::makeSymbolicLink(root / "real", root / "untrusted");
  ASSERT_EQ(::lchown((root / "untrusted").c_str(), 1000, 1000), 0);
  const std::vector<std::string> before = entryNames(root);

  const std::string words = shared_->recoveryKeyLine;
  const std::string tip = tipCode(inspect());
  const std::string exists = "The recovery destination already exists.\n";
  const std::string unavailable = "The recovery destination is unavailable.\n";
  const struct {
    std::string credential;
    std::string code;
    fs::path destination;
    int exitStatus;
    std::string text;
  } refusals[] = {
      {"zzzz " + words, tip, root / "out", 3, "The portable credential is invalid.\n"},
      {words, std::string(64, 'a'), root / "out", 4,
       "The selected snapshot is not present in the current authenticated inspection. Run inspect again.\n"},
      {words, tip, root / "existing", 5, exists},
      {words, tip, root / "empty", 5, exists},
      {words, tip, root / "dangling", 5, exists},
      {words, tip, root / "absent" / "out", 5, unavailable},
      {words, tip, root / "untrusted" / "out", 5, unavailable},  // behind a link of another user
  };
  for (const auto& refusal : refusals) {
    const ProgramOutcome result = exportRun("--recovery-key", refusal.credential, refusal.code, refusal.destination);
    EXPECT_EQ(result.exitStatus, refusal.exitStatus) << refusal.destination;
    EXPECT_EQ(result.standardError, refusal.text) << refusal.destination;
    EXPECT_EQ(result.standardOutput, "") << refusal.destination;
    EXPECT_EQ(entryNames(root), before) << refusal.destination;
  }
  EXPECT_EQ(entryNames(root / "existing"), std::vector<std::string>{"kept"});
  EXPECT_TRUE(entryNames(root / "empty").empty() && entryNames(root / "real").empty());
}

TEST_F(BackupRoundTripTest, AnAddedSnapshotIsTheNewTipWithTheNewFile) {
  fs::copy_file(shared_->library / "Sonnenuntergang.png", shared_->library / "Strand" / "Abendrot.png");
  const ProgramOutcome added = run(
      backupProgram,
      {"add", shared_->package.string(), "--from", shared_->library.string(), "--recovery-key", "--credential-stdin"},
      shared_->recoveryKeyLine);
  ASSERT_EQ(added.exitStatus, 0) << added.standardError;
  const Json document = inspect();
  EXPECT_EQ(document["snapshots"].size(), 2u);
  testsupport::TemporaryDirectory output;
  const ProgramOutcome exported =
      exportRun("--recovery-key", shared_->recoveryKeyLine, tipCode(document), output / "Recovered");
  ASSERT_EQ(exported.exitStatus, 0) << exported.standardError;
  EXPECT_EQ(mediaContents(output / "Recovered" / "All Items"), mediaContents(shared_->library));
}

}  // namespace

}  // namespace galdrine::programs
