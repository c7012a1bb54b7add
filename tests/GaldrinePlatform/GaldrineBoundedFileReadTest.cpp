#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "GaldrinePlatform/GaldrineBoundedFileRead.hpp"
#include "Support/GaldrineOpenDescriptorCount.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

using Kind = GaldrineBoundedFileReadFault::Kind;

void writeFile(const std::filesystem::path& path, std::size_t byteCount) {
  std::ofstream(path, std::ios::binary) << std::string(byteCount, 'x');
}

TEST(GaldrineBoundedFileRead, ReadsWithinTheRangeAndRefusesEveryOtherShape) {
  const GaldrineTemporaryDirectory directory;
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
    std::expected<Bytes, GaldrineBoundedFileReadFault> expected;
  };
  const Row rows[] = {
      {"four", 1, 4, Bytes(4, 'x')},
      {"empty", 0, 4, Bytes{}},
      {"empty", 1, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::sizeOutOfRange})},
      {"five", 1, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::sizeOutOfRange})},
      {"missing", 1, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::openFailed, ENOENT})},
      {"link", 1, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::openFailed, ELOOP})},
      {"folder", 0, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::notRegularFile})},
      {"pipe", 0, 4, std::unexpected(GaldrineBoundedFileReadFault{Kind::notRegularFile})},
  };
  const std::size_t descriptorsBefore = openDescriptorCount();
  for (const Row& row : rows) {
    EXPECT_EQ(GaldrinePlatformFiles::readBoundedRegularFile(directory / row.name, row.minimum, row.maximum), row.expected)
        << row.name;
  }
  EXPECT_EQ(openDescriptorCount(), descriptorsBefore);
}

TEST(GaldrineBoundedFileRead, AFileThatIsNotWhatItsSizeSaysIsRefused) {
  // A file in /proc reports size 0 but holds bytes: the read finds more than fstat promised.
  EXPECT_EQ(GaldrinePlatformFiles::readBoundedRegularFile("/proc/self/status", 0, 64),
            std::unexpected(GaldrineBoundedFileReadFault{Kind::sizeChanged}));
}

}  // namespace
