#include "platform/Files.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/FileDescriptor.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

namespace {

namespace fs = std::filesystem;
using namespace testsupport::FileFixtures;

Bytes patternBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 251);
  return bytes;
}

// The bounded read reads through readUpTo, whose buffer grows in steps of 64 KiB: sizes around
// a step, the bounds around each size, and a file that holds more than its size says.
TEST(Files, BoundedReadTakesARegularFileWithinTheRangeAndRefusesEveryOtherShape) {
  using Kind = BoundedFileReadFault::Kind;
  const testsupport::TemporaryDirectory directory;
  for (const std::size_t size : {0u, 65535u, 65536u, 200001u}) {
    const fs::path path = directory / std::to_string(size);
    writeFile(path, patternBytes(size));
    EXPECT_EQ(Files::readBoundedRegularFile(path, size, size), patternBytes(size)) << size;
    EXPECT_EQ(Files::readBoundedRegularFile(path, size + 1, size + 2),
              std::unexpected(BoundedFileReadFault{Kind::sizeOutOfRange}))
        << size;
  }
  writeFile(directory / "four", "xxxx");
  makeSymbolicLink(directory / "four", directory / "link");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  const struct {
    fs::path path;
    std::size_t maximum;
    BoundedFileReadFault expected;
  } rows[] = {
      {directory / "four", 3, {Kind::sizeOutOfRange}},
      {directory / "missing", 4, {Kind::openFailed, ENOENT}},
      {directory / "link", 4, {Kind::openFailed, ELOOP}},
      {directory / "pipe", 4, {Kind::notRegularFile}},
      // A file in /proc reports size 0 but holds bytes: the read finds more than fstat promised.
      {"/proc/self/status", 64, {Kind::sizeChanged}},
  };
  const std::size_t before = testsupport::openDescriptorCount();
  for (const auto& row : rows) {
    EXPECT_EQ(Files::readBoundedRegularFile(row.path, 0, row.maximum), std::unexpected(row.expected)) << row.path;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

// The size limit cuts the write short at 100 bytes; the rest is tried again and refused.
TEST(Files, WriteAllResumesAShortWriteAndReportsItsRefusal) {
  const testsupport::TemporaryDirectory directory;
  const auto file = FileDescriptor::open(directory / "f", O_WRONLY | O_CREAT | O_EXCL, 0600);
  ASSERT_TRUE(file.has_value());
  const LimitedFileSize limit(100);
  EXPECT_EQ(Files::writeAll(file->get(), patternBytes(159)), std::unexpected(FileError{EFBIG}));
  EXPECT_EQ(readFile(directory / "f"), patternBytes(100));
}

// Both ways of moving must agree on every shape: the kernel's no-replace rename, and the
// link-and-unlink used where a file system refuses that flag.
TEST(Files, BothWaysOfMovingRefuseEveryExistingTarget) {
  using MoveAt = std::expected<void, FileError> (*)(int, const fs::path&, int, const fs::path&);
  for (const MoveAt move : {static_cast<MoveAt>(Files::moveRefusingExistingTarget), &Files::moveRegularFileByLinking}) {
    const testsupport::TemporaryDirectory directory;
    const auto handle = FileDescriptor::openDirectory(directory.path());
    ASSERT_TRUE(handle.has_value());
    const int at = handle->get();
    writeFile(directory / "source", "payload");
    writeFile(directory / "file", "kept");
    makeDirectory(directory / "directory");
    makeSymbolicLink(directory / "nowhere", directory / "dangling");
    for (const char* existing : {"file", "directory", "dangling"}) {
      EXPECT_EQ(move(at, "source", at, existing), std::unexpected(FileError{EEXIST})) << existing;
    }
    EXPECT_EQ(readFile(directory / "file"), ByteText::bytes("kept"));
    EXPECT_TRUE(fs::is_symlink(directory / "dangling"));
    EXPECT_EQ(move(at, "missing", at, "target"), std::unexpected(FileError{ENOENT}));
    EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "target")));
    ASSERT_TRUE(move(at, "source", at, "directory/moved").has_value());
    EXPECT_FALSE(fs::exists(fs::symlink_status(directory / "source")));
    EXPECT_EQ(readFile(directory / "directory" / "moved"), ByteText::bytes("payload"));
  }
}

}  // namespace

}  // namespace galdrine::platform
