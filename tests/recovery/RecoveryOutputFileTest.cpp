#include "recovery/export/RecoveryOutputFile.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryExporterError;

Bytes patterned(std::size_t byteCount, std::uint8_t seed) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 31 + seed);
  return bytes;
}

RecoveryOutputFile created(const fs::path& path) {
  auto file = RecoveryOutputFile::create(path);
  EXPECT_TRUE(file.has_value());
  return std::move(*file);
}

struct OccupiedPathCase {
  std::string name;
  std::function<void(const testsupport::TemporaryDirectory&)> occupy;
  std::function<void(const testsupport::TemporaryDirectory&)> expectUntouched;
};

TEST(RecoveryOutputFile, RefusesAnyPathWhereSomethingStandsAndLeavesItAlone) {
  const OccupiedPathCase cases[] = {
      {"regular file", [](const auto& d) { testsupport::FileFixtures::writeFile(d / "out", "theirs"); },
       [](const auto& d) { EXPECT_EQ(testsupport::FileFixtures::readFile(d / "out"), ByteText::bytes("theirs")); }},
      {"directory", [](const auto& d) { testsupport::FileFixtures::makeDirectory(d / "out"); },
       [](const auto& d) { EXPECT_TRUE(fs::is_directory(fs::symlink_status(d / "out"))); }},
      {"link to a file", [](const auto& d) {
         testsupport::FileFixtures::writeFile(d / "target", "kept");
         testsupport::FileFixtures::makeSymbolicLink(d / "target", d / "out");
       },
       [](const auto& d) {
         EXPECT_TRUE(fs::is_symlink(d / "out"));
         EXPECT_EQ(testsupport::FileFixtures::readFile(d / "target"), ByteText::bytes("kept"));
       }},
      {"dangling link", [](const auto& d) { testsupport::FileFixtures::makeSymbolicLink(d / "nowhere", d / "out"); },
       [](const auto& d) {
         EXPECT_TRUE(fs::is_symlink(d / "out"));
         EXPECT_FALSE(fs::exists(d / "nowhere"));
       }},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.name);
    const testsupport::TemporaryDirectory directory;
    testCase.occupy(directory);
    const auto file = RecoveryOutputFile::create(directory / "out");
    ASSERT_FALSE(file.has_value());
    EXPECT_EQ(file.error(), Error::outputWriteFailed);
    testCase.expectUntouched(directory);
  }
  const testsupport::TemporaryDirectory directory;
  EXPECT_FALSE(RecoveryOutputFile::create(directory / "missing" / "out").has_value());
}

TEST(RecoveryOutputFile, FinishedFileHoldsEveryPieceAndItsDigestWithPrivatePermissions) {
  // Pieces around the hashing slice of 1 MiB: empty, small, exactly one slice, and one byte past.
  std::mt19937 random(7);
  for (int round = 0; round < 4; ++round) {
    const testsupport::TemporaryDirectory directory;
    const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
    auto file = created(directory / "out");
    Bytes all;
    for (const std::size_t byteCount : {std::size_t{0}, std::size_t{1} + random() % 5000, std::size_t{1} << 20,
                                        (std::size_t{1} << 20) + 1 + random() % 3}) {
      const Bytes piece = patterned(byteCount, static_cast<std::uint8_t>(round));
      ASSERT_TRUE(file.append(piece).has_value());
      all.insert(all.end(), piece.begin(), piece.end());
    }
    const auto digest = platform::SHA256::digest(all);
    const auto finished = file.finish(all.size(), digest);
    ASSERT_TRUE(finished.has_value());
    ASSERT_TRUE(finished->has_value());
    EXPECT_EQ(**finished, digest);
    EXPECT_TRUE(file.isCompleted());
    EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
    file.abort();  // after a finish, abort keeps the file
    EXPECT_EQ(testsupport::FileFixtures::readFile(directory / "out"), all);
    struct stat status{};
    ASSERT_EQ(::lstat((directory / "out").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
  }
}

TEST(RecoveryOutputFile, EmptyFileFinishesWithTheDigestOfNothing) {
  const testsupport::TemporaryDirectory directory;
  {
    auto file = created(directory / "empty");
    const auto finished = file.finish(0, platform::SHA256::digest({}));
    ASSERT_TRUE(finished.has_value());
    EXPECT_TRUE(finished->has_value());
  }
  EXPECT_TRUE(fs::exists(directory / "empty"));
  EXPECT_EQ(fs::file_size(directory / "empty"), 0u);
}

TEST(RecoveryOutputFile, MismatchGivesNothingAndLeavesNoFile) {
  const Bytes bytes = patterned(1000, 3);
  const auto digest = platform::SHA256::digest(bytes);
  Bytes otherDigest(digest.begin(), digest.end());
  otherDigest[31] ^= 1;
  struct Case {
    std::string name;
    std::uint64_t byteCount;
    Bytes digest;
  };
  const Case cases[] = {{"count", 999, Bytes(digest.begin(), digest.end())},
                        {"digest", 1000, otherDigest},
                        {"digest length", 1000, Bytes(digest.begin(), digest.begin() + 31)}};
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.name);
    const testsupport::TemporaryDirectory directory;
    auto file = created(directory / "out");
    ASSERT_TRUE(file.append(bytes).has_value());
    const auto finished = file.finish(testCase.byteCount, testCase.digest);
    ASSERT_TRUE(finished.has_value());
    EXPECT_FALSE(finished->has_value());
    EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "out")));
    // The file is gone for good: nothing more can be written or finished.
    EXPECT_EQ(file.append(bytes).error(), Error::outputWriteFailed);
    EXPECT_EQ(file.finish(1000, digest).error(), Error::outputWriteFailed);
  }
}

TEST(RecoveryOutputFile, AnUnfinishedFileRemovesItselfButNeverWhatTookItsName) {
  const testsupport::TemporaryDirectory directory;
  {
    auto file = created(directory / "released");
    ASSERT_TRUE(file.append(patterned(10, 1)).has_value());
  }
  EXPECT_FALSE(fs::exists(directory / "released"));

  {
    auto file = created(directory / "aborted");
    file.abort();
    EXPECT_FALSE(fs::exists(directory / "aborted"));
    EXPECT_EQ(file.finish(0, platform::SHA256::digest({})).error(), Error::outputWriteFailed);
  }

  {
    auto file = created(directory / "replaced");
    fs::remove(directory / "replaced");
    testsupport::FileFixtures::writeFile(directory / "replaced", "someone else's");
  }
  EXPECT_EQ(testsupport::FileFixtures::readFile(directory / "replaced"), ByteText::bytes("someone else's"));

  {
    auto first = created(directory / "moved");
    RecoveryOutputFile second = std::move(first);
    { RecoveryOutputFile dropped = std::move(first); }  // owns nothing, removes nothing
    EXPECT_TRUE(fs::exists(directory / "moved"));
  }
  EXPECT_FALSE(fs::exists(directory / "moved"));
}

TEST(RecoveryOutputFile, FailedWriteAbortsTheFile) {
  const testsupport::TemporaryDirectory directory;
  auto file = created(directory / "out");
  {
    const testsupport::FileFixtures::LimitedFileSize limit(100);
    const auto appended = file.append(patterned(101, 5));
    ASSERT_FALSE(appended.has_value());
    EXPECT_EQ(appended.error(), Error::outputWriteFailed);
  }
  EXPECT_FALSE(fs::exists(directory / "out"));
  EXPECT_EQ(file.finish(0, platform::SHA256::digest({})).error(), Error::outputWriteFailed);
}

// A proven digest replaces the hashing of the one append it came with, and nothing else: the
// finish still compares it, and the file takes no other bytes.
TEST(RecoveryOutputFile, AProvenDigestIsComparedAtFinishAndAllowsNoOtherBytes) {
  const Bytes bytes = patterned(3000, 9);
  const auto digest = platform::SHA256::digest(bytes);
  auto otherDigest = digest;
  otherDigest[0] ^= 1;
  const testsupport::TemporaryDirectory directory;
  {
    auto file = created(directory / "proven");
    ASSERT_TRUE(file.appendProven(bytes, digest).has_value());
    const auto finished = file.finish(3000, digest);
    ASSERT_TRUE(finished.has_value());
    EXPECT_EQ(*finished, digest);
  }
  EXPECT_EQ(testsupport::FileFixtures::readFile(directory / "proven"), bytes);

  auto mismatched = created(directory / "mismatched");
  ASSERT_TRUE(mismatched.appendProven(bytes, otherDigest).has_value());
  const auto refused = mismatched.finish(3000, digest);
  ASSERT_TRUE(refused.has_value());
  EXPECT_FALSE(refused->has_value());
  EXPECT_FALSE(fs::exists(directory / "mismatched"));

  const std::function<bool(RecoveryOutputFile&)> secondAppends[] = {
      [&](RecoveryOutputFile& file) { return file.append(bytes).has_value(); },
      [&](RecoveryOutputFile& file) { return file.appendProven(bytes, digest).has_value(); }};
  for (const auto& secondAppend : secondAppends) {
    auto file = created(directory / "twice");
    ASSERT_TRUE(file.appendProven(bytes, digest).has_value());
    EXPECT_FALSE(secondAppend(file));
    EXPECT_FALSE(fs::exists(directory / "twice"));
  }
  auto afterBytes = created(directory / "late");
  ASSERT_TRUE(afterBytes.append(bytes).has_value());
  EXPECT_EQ(afterBytes.appendProven(bytes, digest).error(), Error::outputWriteFailed);
  EXPECT_FALSE(fs::exists(directory / "late"));
}

}  // namespace

}  // namespace galdrine::recovery
