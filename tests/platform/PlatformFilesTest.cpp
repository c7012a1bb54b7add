#include "platform/Files.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "platform/FileDescriptor.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

namespace {

namespace fs = std::filesystem;
using testsupport::FileFixtures::readFile;
using testsupport::FileFixtures::writeFile;

[[nodiscard]] Bytes patternBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 251);
  return bytes;
}

TEST(Files, WriteAllAndReadUpToRoundTripAcrossTheReadStep) {
  testsupport::TemporaryDirectory directory;
  const std::size_t before = testsupport::openDescriptorCount();
  for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 200001u}) {
    const Bytes bytes = patternBytes(size);
    {
      auto file = FileDescriptor::open(directory / "f", O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0600);
      ASSERT_TRUE(file.has_value());
      ASSERT_TRUE(Files::writeAll(file->get(), bytes).has_value());
      ASSERT_TRUE(Files::synchronizeFile(file->get()).has_value());
      ASSERT_TRUE(file->close().has_value());
    }
    EXPECT_EQ(readFile(directory / "f"), bytes) << size;
    // Bounds below, at and above the size: never more than the bound, never less than is there.
    for (const std::size_t bound : {size == 0 ? 0 : size - 1, size, size + 1}) {
      auto file = FileDescriptor::open(directory / "f", O_RDONLY);
      ASSERT_TRUE(file.has_value());
      const auto read = Files::readUpTo(file->get(), bound);
      ASSERT_TRUE(read.has_value());
      EXPECT_EQ(*read, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bound, size))))
          << size << " " << bound;
    }
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

TEST(Files, ReadUpToGathersShortReadsUntilTheEnd) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  FileDescriptor reading(ends[0]);
  {
    FileDescriptor writing(ends[1]);
    ASSERT_TRUE(Files::writeAll(writing.get(), ByteText::view("ab")).has_value());
    ASSERT_TRUE(Files::writeAll(writing.get(), ByteText::view("cde")).has_value());
  }
  const auto read = Files::readUpTo(reading.get(), 100);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(*read, ByteText::bytes("abcde"));
}

TEST(Files, FailuresCarryTheErrno) {
  testsupport::TemporaryDirectory directory;
  writeFile(directory / "f", "x");
  auto readOnly = FileDescriptor::open(directory / "f", O_RDONLY);
  auto directoryDescriptor = FileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(readOnly.has_value() && directoryDescriptor.has_value());
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  FileDescriptor pipeReading(ends[0]);
  FileDescriptor pipeWriting(ends[1]);

  EXPECT_EQ(Files::writeAll(readOnly->get(), ByteText::view("y")),
            std::unexpected(FileError{EBADF}));
  EXPECT_EQ(Files::readUpTo(directoryDescriptor->get(), 10), std::unexpected(FileError{EISDIR}));
  EXPECT_EQ(Files::synchronizeFile(pipeWriting.get()), std::unexpected(FileError{EINVAL}));
  EXPECT_EQ(Files::synchronizeFile(-1), std::unexpected(FileError{EBADF}));
}

TEST(Files, WriteAllReportsAWritePastTheFileSizeLimit) {
  testsupport::TemporaryDirectory directory;
  auto file = FileDescriptor::open(directory / "f", O_WRONLY | O_CREAT | O_EXCL, 0600);
  ASSERT_TRUE(file.has_value());
  testsupport::FileFixtures::LimitedFileSize limit(100);
  EXPECT_EQ(Files::writeAll(file->get(), patternBytes(159)), std::unexpected(FileError{EFBIG}));
}

using Move = std::function<std::expected<void, FileError>(int, const fs::path&, int, const fs::path&)>;

// Both ways of moving must agree on every shape they accept: the kernel's no-replace rename
// and the link-and-unlink used where a file system refuses that flag.
class MoveRefusingExistingTarget : public testing::TestWithParam<Move> {};

TEST_P(MoveRefusingExistingTarget, MovesARegularFileAndRefusesEveryExistingTarget) {
  testsupport::TemporaryDirectory directory;
  auto handle = FileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(handle.has_value());
  const int at = handle->get();
  writeFile(directory / "source", "payload");
  writeFile(directory / "file", "kept");
  testsupport::FileFixtures::makeDirectory(directory / "directory");
  testsupport::FileFixtures::makeSymbolicLink(directory / "nowhere", directory / "dangling");
  const std::size_t before = testsupport::openDescriptorCount();

  for (const char* existing : {"file", "directory", "dangling"}) {
    EXPECT_EQ(GetParam()(at, "source", at, existing), std::unexpected(FileError{EEXIST})) << existing;
  }
  EXPECT_EQ(readFile(directory / "file"), ByteText::bytes("kept"));
  EXPECT_TRUE(fs::is_symlink(directory / "dangling"));
  EXPECT_EQ(GetParam()(at, "missing", at, "target"), std::unexpected(FileError{ENOENT}));
  EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "target")));

  ASSERT_TRUE(GetParam()(at, "source", at, "directory/moved").has_value());
  EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "source")));
  EXPECT_EQ(readFile(directory / "directory" / "moved"), ByteText::bytes("payload"));
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

INSTANTIATE_TEST_SUITE_P(BothWays, MoveRefusingExistingTarget,
                         testing::Values(Move(static_cast<std::expected<void, FileError> (*)(
                                                  int, const fs::path&, int, const fs::path&)>(
                                             Files::moveRefusingExistingTarget)),
                                         Move(Files::moveRegularFileByLinking)));

TEST(Files, MovesADirectoryByPathAndRefusesAnExistingTarget) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "staged");
  writeFile(directory / "staged" / "inside", "x");
  testsupport::FileFixtures::makeDirectory(directory / "taken");
  EXPECT_EQ(Files::moveRefusingExistingTarget(directory / "staged", directory / "taken"),
            std::unexpected(FileError{EEXIST}));
  ASSERT_TRUE(Files::moveRefusingExistingTarget(directory / "staged", directory / "published").has_value());
  EXPECT_EQ(readFile(directory / "published" / "inside"), ByteText::bytes("x"));
  EXPECT_FALSE(fs::exists(directory / "staged"));
}

TEST(Files, OnlyAnUnsupportedFlagFallsBackToLinking) {
  EXPECT_TRUE(Files::fileSystemRefusesNoReplaceFlag(EINVAL));
  EXPECT_TRUE(Files::fileSystemRefusesNoReplaceFlag(ENOSYS));
  for (const int other : {0, EEXIST, ENOENT, EXDEV, EPERM, EACCES, EISDIR, ENOTDIR, EIO}) {
    EXPECT_FALSE(Files::fileSystemRefusesNoReplaceFlag(other)) << other;
  }
}

}  // namespace

}  // namespace galdrine::platform
