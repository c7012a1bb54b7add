#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/BoundedFileRead.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

namespace {

using Kind = BoundedFileReadFault::Kind;

void writeFile(const std::filesystem::path& path, std::size_t byteCount) {
  std::ofstream(path, std::ios::binary) << std::string(byteCount, 'x');
}

TEST(BoundedFileRead, ReadsWithinTheRangeAndRefusesEveryOtherShape) {
  const testsupport::TemporaryDirectory directory;
  writeFile(directory / "four", 4);
  writeFile(directory / "five", 5);
  writeFile(directory / "empty", 0);
  std::filesystem::create_directory(directory / "folder");
  std::filesystem::create_symlink(directory / "four", directory / "link");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);

  struct Row {
    const char* name;
    std::size_t minimum;
    std::size_t maximum;
    std::expected<Bytes, BoundedFileReadFault> expected;
  };
  const Row rows[] = {
      {"four", 1, 4, Bytes(4, 'x')},
      {"empty", 0, 4, Bytes{}},
      {"empty", 1, 4, std::unexpected(BoundedFileReadFault{Kind::sizeOutOfRange})},
      {"five", 1, 4, std::unexpected(BoundedFileReadFault{Kind::sizeOutOfRange})},
      {"missing", 1, 4, std::unexpected(BoundedFileReadFault{Kind::openFailed, ENOENT})},
      {"link", 1, 4, std::unexpected(BoundedFileReadFault{Kind::openFailed, ELOOP})},
      {"folder", 0, 4, std::unexpected(BoundedFileReadFault{Kind::notRegularFile})},
      {"pipe", 0, 4, std::unexpected(BoundedFileReadFault{Kind::notRegularFile})},
  };
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  for (const Row& row : rows) {
    EXPECT_EQ(Files::readBoundedRegularFile(directory / row.name, row.minimum, row.maximum), row.expected)
        << row.name;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

TEST(BoundedFileRead, AFileThatIsNotWhatItsSizeSaysIsRefused) {
  // A file in /proc reports size 0 but holds bytes: the read finds more than fstat promised.
  EXPECT_EQ(Files::readBoundedRegularFile("/proc/self/status", 0, 64),
            std::unexpected(BoundedFileReadFault{Kind::sizeChanged}));
}

}  // namespace

}  // namespace galdrine::platform
