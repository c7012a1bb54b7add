// The two programs together, as a user runs them: galdrine-backup makes a package of the
// project's sample library, and galdrine-recovery gives every photo and video back byte for
// byte, with either factor; a snapshot added later is the new tip and holds the new file.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "support/PseudoTerminal.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::programs {

namespace {

namespace fs = std::filesystem;

const std::string backupProgram = GALDRINE_BACKUP_EXECUTABLE;
const std::string recoveryProgram = GALDRINE_RECOVERY_EXECUTABLE;
const std::string sampleLibraryScript = GALDRINE_SAMPLE_LIBRARY_SCRIPT;
const std::string passphraseLine = "lantern orchard 47 quietly drifting\n";

// The media of a directory as the exporter should give them back: the contents of every
// photo and video, in sorted order, since names change on the way (collisions, live pairs).
std::vector<std::string> mediaContents(const fs::path& root) {
  std::vector<std::string> contents;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string name = entry.path().filename().string();
    const std::string extension = entry.path().extension().string();
    if (!entry.is_regular_file() || name.starts_with(".") || extension == ".txt") continue;
    const Bytes bytes = testsupport::FileFixtures::readFile(entry.path());
    contents.emplace_back(bytes.begin(), bytes.end());
  }
  std::ranges::sort(contents);
  return contents;
}

// The 24 words galdrine-backup shows once: the only line of its output with 24 words.
std::string recoveryKeyLine(const std::string& standardOutput) {
  std::istringstream lines(standardOutput);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    if (std::distance(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()) == 24) {
      return line + "\n";
    }
  }
  return {};
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
    const testsupport::ProgramRun drawn = testsupport::runProgram(sampleLibraryScript, {shared_->library.string()}, "");
    ASSERT_EQ(drawn.exitStatus, 0) << drawn.standardError;
    const testsupport::ProgramRun created =
        testsupport::runProgram(backupProgram,
                   {"create", shared_->package.string(), "--from", shared_->library.string(), "--backup-passphrase",
                    "--new-recovery-key", "--credential-stdin"},
                   passphraseLine);
    ASSERT_EQ(created.exitStatus, 0) << created.standardError;
    shared_->recoveryKeyLine = recoveryKeyLine(created.standardOutput);
  }
  static void TearDownTestSuite() { shared_.reset(); }

  static std::vector<std::string> factorArguments(const std::string& factor) {
    return {factor, "--credential-stdin"};
  }
  static std::string credentialFor(const std::string& factor) {
    return factor == "--recovery-key" ? shared_->recoveryKeyLine : passphraseLine;
  }

  // inspect, then the canonical tip's code: the tip of the first preserved branch.
  static std::string tipCode(const std::string& factor, std::size_t expectedSnapshotCount) {
    std::vector<std::string> arguments{"inspect", shared_->package.string()};
    std::ranges::copy(factorArguments(factor), std::back_inserter(arguments));
    const testsupport::ProgramRun inspected = testsupport::runProgram(recoveryProgram, arguments, credentialFor(factor));
    EXPECT_EQ(inspected.exitStatus, 0) << inspected.standardError;
    const auto document = nlohmann::json::parse(inspected.standardOutput, nullptr, false);
    if (document.is_discarded() || !document.contains("preservedBranches")) return {};
    EXPECT_EQ(document["snapshots"].size(), expectedSnapshotCount);
    return document["preservedBranches"][0]["tipSelectionCode"].get<std::string>();
  }

  static testsupport::ProgramRun exportTip(const std::string& factor, const fs::path& destination, std::size_t snapshotCount) {
    std::vector<std::string> arguments{"export", shared_->package.string(), "--snapshot",
                                       tipCode(factor, snapshotCount), "--destination", destination.string()};
    std::ranges::copy(factorArguments(factor), std::back_inserter(arguments));
    return testsupport::runProgram(recoveryProgram, arguments, credentialFor(factor));
  }

  static std::unique_ptr<Package> shared_;
};

std::unique_ptr<BackupRoundTripTest::Package> BackupRoundTripTest::shared_;

TEST_F(BackupRoundTripTest, EachFactorExportsEveryMediaFileByteForByte) {
  ASSERT_FALSE(shared_->recoveryKeyLine.empty());
  const auto original = mediaContents(shared_->library);
  ASSERT_EQ(original.size(), 11u);  // ten items, one of them a live photo of two files
  for (const std::string factor : {"--backup-passphrase", "--recovery-key"}) {
    SCOPED_TRACE(factor);
    testsupport::TemporaryDirectory output;
    const fs::path destination = output / "Recovered";
    const testsupport::ProgramRun exported = exportTip(factor, destination, 1);
    ASSERT_EQ(exported.exitStatus, 0) << exported.standardError;
    EXPECT_NE(exported.standardOutput.find("\"status\": \"completed\""), std::string::npos);
    EXPECT_EQ(mediaContents(destination / "All Items"), original);
    EXPECT_TRUE(fs::is_regular_file(destination / "recovery-report.json"));
    EXPECT_TRUE(fs::is_regular_file(destination / "library-mapping.json"));
  }
}

TEST_F(BackupRoundTripTest, AnAddedSnapshotIsTheNewTipWithTheNewFile) {
  fs::copy_file(shared_->library / "Sonnenuntergang.png", shared_->library / "Strand" / "Abendrot.png");
  const testsupport::ProgramRun added = testsupport::runProgram(backupProgram,
                                      {"add", shared_->package.string(), "--from", shared_->library.string(),
                                       "--recovery-key", "--credential-stdin"},
                                      shared_->recoveryKeyLine);
  ASSERT_EQ(added.exitStatus, 0) << added.standardError;

  testsupport::TemporaryDirectory output;
  const testsupport::ProgramRun exported = exportTip("--recovery-key", output / "Recovered", 2);
  ASSERT_EQ(exported.exitStatus, 0) << exported.standardError;
  EXPECT_EQ(mediaContents(output / "Recovered" / "All Items"), mediaContents(shared_->library));
}

}  // namespace

}  // namespace galdrine::programs
