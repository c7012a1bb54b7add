#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineOpenDescriptorCount.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

namespace fs = std::filesystem;
using GaldrineFileFixtures::readFile;
using GaldrineFileFixtures::writeFile;

[[nodiscard]] Bytes patternBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 251);
  return bytes;
}

TEST(GaldrinePlatformFiles, WriteAllAndReadUpToRoundTripAcrossTheReadStep) {
  GaldrineTemporaryDirectory directory;
  const std::size_t before = openDescriptorCount();
  for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 200001u}) {
    const Bytes bytes = patternBytes(size);
    {
      auto file = GaldrineFileDescriptor::open(directory / "f", O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0600);
      ASSERT_TRUE(file.has_value());
      ASSERT_TRUE(GaldrinePlatformFiles::writeAll(file->get(), bytes).has_value());
      ASSERT_TRUE(GaldrinePlatformFiles::synchronizeFile(file->get()).has_value());
      ASSERT_TRUE(file->close().has_value());
    }
    EXPECT_EQ(readFile(directory / "f"), bytes) << size;
    // Bounds below, at and above the size: never more than the bound, never less than is there.
    for (const std::size_t bound : {size == 0 ? 0 : size - 1, size, size + 1}) {
      auto file = GaldrineFileDescriptor::open(directory / "f", O_RDONLY);
      ASSERT_TRUE(file.has_value());
      const auto read = GaldrinePlatformFiles::readUpTo(file->get(), bound);
      ASSERT_TRUE(read.has_value());
      EXPECT_EQ(*read, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bound, size))))
          << size << " " << bound;
    }
  }
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(GaldrinePlatformFiles, ReadUpToGathersShortReadsUntilTheEnd) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  GaldrineFileDescriptor reading(ends[0]);
  {
    GaldrineFileDescriptor writing(ends[1]);
    ASSERT_TRUE(GaldrinePlatformFiles::writeAll(writing.get(), GaldrineByteText::view("ab")).has_value());
    ASSERT_TRUE(GaldrinePlatformFiles::writeAll(writing.get(), GaldrineByteText::view("cde")).has_value());
  }
  const auto read = GaldrinePlatformFiles::readUpTo(reading.get(), 100);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(*read, GaldrineByteText::bytes("abcde"));
}

TEST(GaldrinePlatformFiles, FailuresCarryTheErrno) {
  GaldrineTemporaryDirectory directory;
  writeFile(directory / "f", "x");
  auto readOnly = GaldrineFileDescriptor::open(directory / "f", O_RDONLY);
  auto directoryDescriptor = GaldrineFileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(readOnly.has_value() && directoryDescriptor.has_value());
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  GaldrineFileDescriptor pipeReading(ends[0]);
  GaldrineFileDescriptor pipeWriting(ends[1]);

  EXPECT_EQ(GaldrinePlatformFiles::writeAll(readOnly->get(), GaldrineByteText::view("y")),
            std::unexpected(GaldrinePlatformFileError{EBADF}));
  EXPECT_EQ(GaldrinePlatformFiles::readUpTo(directoryDescriptor->get(), 10), std::unexpected(GaldrinePlatformFileError{EISDIR}));
  EXPECT_EQ(GaldrinePlatformFiles::synchronizeFile(pipeWriting.get()), std::unexpected(GaldrinePlatformFileError{EINVAL}));
  EXPECT_EQ(GaldrinePlatformFiles::synchronizeFile(-1), std::unexpected(GaldrinePlatformFileError{EBADF}));
}

TEST(GaldrinePlatformFiles, WriteAllReportsAWritePastTheFileSizeLimit) {
  GaldrineTemporaryDirectory directory;
  auto file = GaldrineFileDescriptor::open(directory / "f", O_WRONLY | O_CREAT | O_EXCL, 0600);
  ASSERT_TRUE(file.has_value());
  GaldrineFileFixtures::LimitedFileSize limit(100);
  EXPECT_EQ(GaldrinePlatformFiles::writeAll(file->get(), patternBytes(159)), std::unexpected(GaldrinePlatformFileError{EFBIG}));
}

using Move = std::function<std::expected<void, GaldrinePlatformFileError>(int, const fs::path&, int, const fs::path&)>;

// Both ways of moving must agree on every shape they accept: the kernel's no-replace rename
// and the link-and-unlink used where a file system refuses that flag.
class GaldrineMoveRefusingExistingTarget : public testing::TestWithParam<Move> {};

TEST_P(GaldrineMoveRefusingExistingTarget, MovesARegularFileAndRefusesEveryExistingTarget) {
  GaldrineTemporaryDirectory directory;
  auto handle = GaldrineFileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(handle.has_value());
  const int at = handle->get();
  writeFile(directory / "source", "payload");
  writeFile(directory / "file", "kept");
  GaldrineFileFixtures::makeDirectory(directory / "directory");
  GaldrineFileFixtures::makeSymbolicLink(directory / "nowhere", directory / "dangling");
  const std::size_t before = openDescriptorCount();

  for (const char* existing : {"file", "directory", "dangling"}) {
    EXPECT_EQ(GetParam()(at, "source", at, existing), std::unexpected(GaldrinePlatformFileError{EEXIST})) << existing;
  }
  EXPECT_EQ(readFile(directory / "file"), GaldrineByteText::bytes("kept"));
  EXPECT_TRUE(fs::is_symlink(directory / "dangling"));
  EXPECT_EQ(GetParam()(at, "missing", at, "target"), std::unexpected(GaldrinePlatformFileError{ENOENT}));
  EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "target")));

  ASSERT_TRUE(GetParam()(at, "source", at, "directory/moved").has_value());
  EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "source")));
  EXPECT_EQ(readFile(directory / "directory" / "moved"), GaldrineByteText::bytes("payload"));
  EXPECT_EQ(openDescriptorCount(), before);
}

INSTANTIATE_TEST_SUITE_P(BothWays, GaldrineMoveRefusingExistingTarget,
                         testing::Values(Move(static_cast<std::expected<void, GaldrinePlatformFileError> (*)(
                                                  int, const fs::path&, int, const fs::path&)>(
                                             GaldrinePlatformFiles::moveRefusingExistingTarget)),
                                         Move(GaldrinePlatformFiles::moveRegularFileByLinking)));

TEST(GaldrinePlatformFiles, MovesADirectoryByPathAndRefusesAnExistingTarget) {
  GaldrineTemporaryDirectory directory;
  GaldrineFileFixtures::makeDirectory(directory / "staged");
  writeFile(directory / "staged" / "inside", "x");
  GaldrineFileFixtures::makeDirectory(directory / "taken");
  EXPECT_EQ(GaldrinePlatformFiles::moveRefusingExistingTarget(directory / "staged", directory / "taken"),
            std::unexpected(GaldrinePlatformFileError{EEXIST}));
  ASSERT_TRUE(GaldrinePlatformFiles::moveRefusingExistingTarget(directory / "staged", directory / "published").has_value());
  EXPECT_EQ(readFile(directory / "published" / "inside"), GaldrineByteText::bytes("x"));
  EXPECT_FALSE(fs::exists(directory / "staged"));
}

TEST(GaldrinePlatformFiles, OnlyAnUnsupportedFlagFallsBackToLinking) {
  EXPECT_TRUE(GaldrinePlatformFiles::fileSystemRefusesNoReplaceFlag(EINVAL));
  EXPECT_TRUE(GaldrinePlatformFiles::fileSystemRefusesNoReplaceFlag(ENOSYS));
  for (const int other : {0, EEXIST, ENOENT, EXDEV, EPERM, EACCES, EISDIR, ENOTDIR, EIO}) {
    EXPECT_FALSE(GaldrinePlatformFiles::fileSystemRefusesNoReplaceFlag(other)) << other;
  }
}

}  // namespace
