// Listing commits and heads by their canonical names only, and reading a metadata file with
// every fault mapped to its one case.

#include "recovery/inspection/RecoveryArtifactFiles.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

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
      {{kFirst.substr(1) + ".commit"}, "commit", Error::integrityFailure},
      {{kFirst + "0.commit"}, "commit", Error::integrityFailure},
      {{kFirst + ".commit.partial"}, "commit", Error::integrityFailure},
      {{std::string("g").append(kFirst.substr(1)).append(".commit")}, "commit", Error::integrityFailure},
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
  for (int index = 0; index < 3; ++index)
    writeFile(directory / (kFirst.substr(0, 31) + std::to_string(index) + ".head"), "x");
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory.path(), "head", 3)), std::nullopt);
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory.path(), "head", 2)),
            Error::resourceLimitExceeded);
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory / "absent", "head", 3)),
            Error::packageUnavailable);
  makeSymbolicLink(directory.path(), directory / "link");
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::artifactIdentifiers(directory / "link", "head", 3)),
            Error::packageUnavailable);
}

// The inspector's suite removes, cuts, lengthens and replaces metadata files; here are the
// bound, a fifo, which must not block, and a file that exists but cannot be opened.
TEST(RecoveryArtifactFilesTest, ReadingKeepsToItsBoundAndMapsEachFaultToItsCase) {
  testsupport::TemporaryDirectory directory;
  writeFile(directory / "eight", "12345678");
  writeFile(directory / "empty", "");
  ASSERT_EQ(::mkfifo((directory / "fifo").c_str(), 0600), 0);
  const std::pair<const char*, std::int64_t> refused[] = {
      {"eight", 7}, {"eight", 0}, {"eight", -1}, {"empty", 8}, {"fifo", 8}};
  for (const auto& [name, maximumByteCount] : refused) {
    EXPECT_EQ(errorOf(RecoveryArtifactFiles::readRegularFile(directory / name, maximumByteCount)),
              Error::integrityFailure)
        << name << " " << maximumByteCount;
  }
  EXPECT_EQ(RecoveryArtifactFiles::readRegularFile(directory / "eight", 8), ByteText::bytes("12345678"));
  ExhaustedDescriptors exhausted;
  EXPECT_EQ(errorOf(RecoveryArtifactFiles::readRegularFile(directory / "eight", 8)), Error::packageUnavailable);
}

}  // namespace

}  // namespace galdrine::recovery
