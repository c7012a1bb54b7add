// Listing commits and heads by their canonical names only, and reading a metadata file with
// every fault mapped to its one case.

#include "recovery/inspection/RecoveryArtifactFiles.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "support/FileFixtures.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using namespace testsupport::FileFixtures;

const std::string kFirst = "000102030405060708090a0b0c0d0e0f";
const std::string kSecond = "f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff";

template <typename Value>
[[nodiscard]] std::optional<Error> errorOf(const std::expected<Value, Error>& result) {
  return result ? std::nullopt : std::optional(result.error());
}

TEST(RecoveryArtifactFilesTest, ListsCanonicalNamesAscendingAndRefusesAnyOther) {
  const struct {
    std::vector<std::string> names;
    std::string_view extension;
    std::optional<Error> expected;
  } cases[] = {
      {{}, "commit", std::nullopt},
      {{kSecond + ".commit", kFirst + ".commit"}, "commit", std::nullopt},
      {{kFirst + ".head", kSecond + ".head"}, "head", std::nullopt},
      {{"000102030405060708090A0B0C0D0E0F.commit"}, "commit", Error::integrityFailure},  // upper-case digits
      {{kFirst + ".commit", kSecond + ".head"}, "commit", Error::integrityFailure},      // a head among commits
      {{kFirst + ".commit", "notes.txt"}, "commit", Error::integrityFailure},
      {{".DS_Store"}, "commit", Error::integrityFailure},
      {{kFirst.substr(1) + ".commit"}, "commit", Error::integrityFailure},
      {{kFirst + "0.commit"}, "commit", Error::integrityFailure},
      {{kFirst + "commit"}, "commit", Error::integrityFailure},
      {{kFirst + ".commit.partial"}, "commit", Error::integrityFailure},
      {{"g" + kFirst.substr(1) + ".commit"}, "commit", Error::integrityFailure},
      {{kFirst + ".snapshot"}, "snapshot", Error::integrityFailure},  // an extension of another kind
  };
  for (const auto& testCase : cases) {
    testsupport::TemporaryDirectory directory;
    for (const auto& name : testCase.names) writeFile(directory / name, "x");
    const auto listed = RecoveryArtifactFiles::artifactIdentifiers(directory.path(), testCase.extension, 20);
    SCOPED_TRACE(testCase.names.empty() ? "" : testCase.names.back());
    EXPECT_EQ(errorOf(listed), testCase.expected);
    if (listed) {
      EXPECT_EQ(listed->size(), testCase.names.size());
      EXPECT_TRUE(std::ranges::is_sorted(*listed));
      for (const Bytes& identifier : *listed) EXPECT_EQ(identifier.size(), 16u);
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
  const struct {
    std::string name;
    std::int64_t maximumByteCount;
    std::optional<Error> expected;
  } cases[] = {
      {"eight", 8, std::nullopt},          {"eight", 9, std::nullopt},          {"eight", 7, Error::integrityFailure},
      {"eight", 0, Error::integrityFailure}, {"eight", -1, Error::integrityFailure}, {"empty", 8, Error::integrityFailure},
      {"absent", 8, Error::integrityFailure}, {"link", 8, Error::integrityFailure}, {"dangling", 8, Error::integrityFailure},
      {"directory", 8, Error::integrityFailure}, {"fifo", 8, Error::integrityFailure},
  };
  for (const auto& testCase : cases) {
    const auto read = RecoveryArtifactFiles::readRegularFile(directory / testCase.name, testCase.maximumByteCount);
    EXPECT_EQ(errorOf(read), testCase.expected) << testCase.name << " " << testCase.maximumByteCount;
    EXPECT_EQ(read.value_or(ByteText::bytes("12345678")), ByteText::bytes("12345678"));
  }
  // With no descriptor to be had, the file exists but cannot be read.
  ExhaustedDescriptors exhausted;
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::readRegularFile(directory / "eight", 8)), Error::packageUnavailable);
}

}  // namespace

}  // namespace galdrine::recovery
