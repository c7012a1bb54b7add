// Listing commits and heads by their canonical names only, and reading a metadata file with
// every fault mapped to its one case.

#include "recovery/inspection/RecoveryArtifactFiles.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "support/RecoveryTestPackages.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryPackageInspectorError;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::makeSymbolicLink;
using testsupport::FileFixtures::writeFile;

const std::string kFirst = "000102030405060708090a0b0c0d0e0f";
const std::string kSecond = "f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff";

template <typename Value>
[[nodiscard]] std::optional<Error> errorOf(const std::expected<Value, Error>& result) {
  if (result) return std::nullopt;
  return result.error();
}

TEST(RecoveryArtifactFilesTest, ListsCanonicalNamesAscendingAndRefusesAnyOther) {
  struct Case {
    std::string name;
    std::vector<std::string> names;
    std::string_view extension;
    std::optional<Error> expected;
  };
  const Case cases[] = {
      {"empty directory", {}, "commit", std::nullopt},
      {"two commits", {kSecond + ".commit", kFirst + ".commit"}, "commit", std::nullopt},
      {"two heads", {kFirst + ".head", kSecond + ".head"}, "head", std::nullopt},
      {"upper-case digits", {"000102030405060708090A0B0C0D0E0F.commit"}, "commit", Error::integrityFailure},
      {"a head among commits", {kFirst + ".commit", kSecond + ".head"}, "commit", Error::integrityFailure},
      {"a stray file", {kFirst + ".commit", "notes.txt"}, "commit", Error::integrityFailure},
      {"a hidden file", {".DS_Store"}, "commit", Error::integrityFailure},
      {"31 digits", {kFirst.substr(1) + ".commit"}, "commit", Error::integrityFailure},
      {"33 digits", {kFirst + "0.commit"}, "commit", Error::integrityFailure},
      {"no dot", {kFirst + "commit"}, "commit", Error::integrityFailure},
      {"a staging suffix", {kFirst + ".commit.partial"}, "commit", Error::integrityFailure},
      {"a non-hexadecimal digit", {"g" + kFirst.substr(1) + ".commit"}, "commit", Error::integrityFailure},
      {"an extension of another kind", {kFirst + ".snapshot"}, "snapshot", Error::integrityFailure},
  };
  for (const Case& testCase : cases) {
    testsupport::TemporaryDirectory directory;
    for (const auto& name : testCase.names) writeFile(directory / name, "x");
    const auto listed = RecoveryArtifactFiles::artifactIdentifiers(directory.path(), testCase.extension, 20);
    EXPECT_EQ(errorOf(listed), testCase.expected) << testCase.name;
    if (listed) {
      EXPECT_EQ(listed->size(), testCase.names.size()) << testCase.name;
      EXPECT_TRUE(std::ranges::is_sorted(*listed)) << testCase.name;
      for (const Bytes& identifier : *listed) EXPECT_EQ(identifier.size(), 16u) << testCase.name;
    }
  }
}

TEST(RecoveryArtifactFilesTest, TheListingBoundIsInclusiveAndOtherListingFaultsAreUnavailability) {
  testsupport::TemporaryDirectory directory;
  for (int index = 0; index < 3; ++index) writeFile(directory / (kFirst.substr(0, 31) + std::to_string(index) + ".head"), "x");
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory.path(), "head", 3)), std::nullopt);
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory.path(), "head", 2)), Error::resourceLimitExceeded);
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory / "absent", "head", 3)), Error::packageUnavailable);
  makeSymbolicLink(directory.path(), directory / "link");
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory / "link", "head", 3)), Error::packageUnavailable);
}

TEST(RecoveryArtifactFilesTest, ReadingMapsEachFaultToItsCase) {
  testsupport::TemporaryDirectory directory;
  writeFile(directory / "eight", "12345678");
  writeFile(directory / "empty", "");
  makeDirectory(directory / "directory");
  makeSymbolicLink(directory / "eight", directory / "link");
  makeSymbolicLink(directory / "nowhere", directory / "dangling");
  ASSERT_EQ(::mkfifo((directory / "fifo").c_str(), 0600), 0);
  struct Case {
    std::string name;
    std::int64_t maximumByteCount;
    std::optional<Error> expected;
  };
  const Case cases[] = {
      {"eight", 8, std::nullopt},
      {"eight", 9, std::nullopt},
      {"eight", 7, Error::integrityFailure},
      {"eight", 0, Error::integrityFailure},
      {"eight", -1, Error::integrityFailure},
      {"empty", 8, Error::integrityFailure},
      {"absent", 8, Error::integrityFailure},
      {"link", 8, Error::integrityFailure},
      {"dangling", 8, Error::integrityFailure},
      {"directory", 8, Error::integrityFailure},
      {"fifo", 8, Error::integrityFailure},
  };
  for (const Case& testCase : cases) {
    const auto read = RecoveryArtifactFiles::readRegularFile(directory / testCase.name, testCase.maximumByteCount);
    EXPECT_EQ(errorOf(read), testCase.expected) << testCase.name << " " << testCase.maximumByteCount;
    if (read) {
      EXPECT_EQ(*read, ByteText::bytes("12345678"));
    }
  }
  // With no descriptor to be had, the file exists but cannot be read.
  testsupport::FileFixtures::ExhaustedDescriptors exhausted;
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::readRegularFile(directory / "eight", 8)), Error::packageUnavailable);
}

}  // namespace

}  // namespace galdrine::recovery
