// The one way an export puts bytes on disk: never over anything, proven before it is durable,
// and gone unless finished.

#include "recovery/export/RecoveryOutputFile.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/ExportTestSupport.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using namespace testsupport::FileFixtures;
using Finished = std::expected<std::optional<platform::SHA256Digest>, RecoveryExporterError>;
constexpr auto writeFailed = std::unexpected(RecoveryExporterError::outputWriteFailed);

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

TEST(RecoveryOutputFileTest, RefusesAnyPathWhereSomethingStandsAndLeavesItAlone) {
  const testsupport::TemporaryDirectory directory;
  writeFile(directory / "file", "theirs");
  makeDirectory(directory / "directory");
  makeSymbolicLink(directory / "file", directory / "link");
  makeSymbolicLink(directory / "nowhere", directory / "dangling");
  for (const char* name : {"file", "directory", "link", "dangling", "missing/out"}) {
    EXPECT_EQ(RecoveryOutputFile::create(directory / name).error(), RecoveryExporterError::outputWriteFailed) << name;
  }
  EXPECT_EQ(readFile(directory / "file"), ByteText::bytes("theirs"));
  EXPECT_TRUE(fs::is_directory(fs::symlink_status(directory / "directory")));
  EXPECT_TRUE(fs::is_symlink(directory / "link") && fs::is_symlink(directory / "dangling"));
  EXPECT_FALSE(fs::exists(directory / "nowhere"));
}

// Pieces around the hashing slice of 1 MiB: empty, small, exactly one slice, and one byte past.
TEST(RecoveryOutputFileTest, AFinishedFileHoldsEveryPieceAndItsDigestWithPrivatePermissions) {
  const testsupport::TemporaryDirectory directory;
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  auto file = created(directory / "out");
  Bytes all;
  for (const std::size_t byteCount :
       {std::size_t{0}, std::size_t{4999}, std::size_t{1} << 20, (std::size_t{1} << 20) + 1}) {
    const Bytes piece = patterned(byteCount, static_cast<std::uint8_t>(byteCount));
    ASSERT_TRUE(file.append(piece));
    all.insert(all.end(), piece.begin(), piece.end());
  }
  const auto digest = platform::SHA256::digest(all);
  EXPECT_EQ(file.finish(all.size(), digest), Finished(digest));
  EXPECT_TRUE(file.isCompleted());
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
  file.abort();  // after a finish, abort keeps the file
  EXPECT_EQ(readFile(directory / "out"), all);
  struct stat status {};
  ASSERT_EQ(::lstat((directory / "out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_EQ(created(directory / "empty").finish(0, platform::SHA256::digest({})),
            Finished(platform::SHA256::digest({})));
}

// A count or digest other than the one expected is a result, not a failure: nothing is given,
// the file is gone, and it takes nothing more. A proven digest replaces the hashing of the one
// append it came with and is compared the same way.
TEST(RecoveryOutputFileTest, AMismatchAtFinishGivesNothingAndLeavesNoFile) {
  const Bytes bytes = patterned(1000, 3);
  const auto digest = platform::SHA256::digest(bytes);
  auto otherDigest = digest;
  otherDigest[31] ^= 1;
  const struct {
    const char* name;
    bool proven;
    std::uint64_t byteCount;
    Bytes digest;
  } cases[] = {{"count", false, 999, Bytes(digest.begin(), digest.end())},
               {"digest", false, 1000, Bytes(otherDigest.begin(), otherDigest.end())},
               {"digest length", false, 1000, Bytes(digest.begin(), digest.begin() + 31)},
               {"proven count", true, 999, Bytes(digest.begin(), digest.end())},
               {"proven digest", true, 1000, Bytes(otherDigest.begin(), otherDigest.end())}};
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.name);
    const testsupport::TemporaryDirectory directory;
    auto file = created(directory / "out");
    ASSERT_TRUE(testCase.proven ? file.appendProven(bytes, digest) : file.append(bytes));
    EXPECT_EQ(file.finish(testCase.byteCount, testCase.digest), Finished(std::nullopt));
    EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "out")));
    EXPECT_EQ(file.append(bytes), writeFailed);
    EXPECT_EQ(file.finish(1000, digest), writeFailed);
  }
  const testsupport::TemporaryDirectory directory;
  auto proven = created(directory / "proven");
  ASSERT_TRUE(proven.appendProven(bytes, digest));
  EXPECT_EQ(proven.finish(1000, digest), Finished(digest));
  EXPECT_EQ(readFile(directory / "proven"), bytes);
}

// A proven append must be the file's whole content: none after bytes, nothing after it.
TEST(RecoveryOutputFileTest, AProvenAppendAllowsNoOtherBytes) {
  const Bytes bytes = patterned(3000, 9);
  const auto digest = platform::SHA256::digest(bytes);
  const testsupport::TemporaryDirectory directory;
  for (const auto& [provenFirst, provenSecond] : {std::pair{true, false}, {true, true}, {false, true}}) {
    auto file = created(directory / "out");
    ASSERT_TRUE(provenFirst ? file.appendProven(bytes, digest) : file.append(bytes));
    EXPECT_EQ(provenSecond ? file.appendProven(bytes, digest) : file.append(bytes), writeFailed);
    EXPECT_FALSE(fs::exists(directory / "out"));
  }
}

TEST(RecoveryOutputFileTest, AnUnfinishedFileRemovesItselfButNeverWhatTookItsName) {
  const testsupport::TemporaryDirectory directory;
  {
    auto released = created(directory / "released");
    ASSERT_TRUE(released.append(patterned(10, 1)));
    auto aborted = created(directory / "aborted");
    aborted.abort();
    EXPECT_FALSE(fs::exists(directory / "aborted"));
    EXPECT_EQ(aborted.finish(0, platform::SHA256::digest({})), writeFailed);
    auto replaced = created(directory / "replaced");
    fs::remove(directory / "replaced");
    writeFile(directory / "replaced", "someone else's");
    auto moved = created(directory / "moved");
    RecoveryOutputFile kept = std::move(moved);
    { RecoveryOutputFile dropped = std::move(moved); }  // owns nothing, removes nothing
    EXPECT_TRUE(fs::exists(directory / "moved"));
  }
  EXPECT_EQ(testsupport::ExportTestSupport::entryNames(directory.path()), std::vector<std::string>{"replaced"});
  EXPECT_EQ(readFile(directory / "replaced"), ByteText::bytes("someone else's"));

  auto file = created(directory / "out");
  {
    const LimitedFileSize limit(100);
    EXPECT_EQ(file.append(patterned(101, 5)), writeFailed);
  }
  EXPECT_FALSE(fs::exists(directory / "out"));
  EXPECT_EQ(file.finish(0, platform::SHA256::digest({})), writeFailed);
}

}  // namespace

}  // namespace galdrine::recovery
