#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <utility>

#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineOpenDescriptorCount.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

using GaldrineFileFixtures::isDescriptorOpen;

TEST(GaldrineFileDescriptor, ClosesOnEveryWayOutAndOnlyOnce) {
  GaldrineTemporaryDirectory directory;
  const std::size_t before = openDescriptorCount();
  int number = -1;
  {
    auto opened = GaldrineFileDescriptor::openDirectory(directory.path());
    ASSERT_TRUE(opened.has_value());
    number = opened->get();
    EXPECT_NE(::fcntl(number, F_GETFD) & FD_CLOEXEC, 0);
    GaldrineFileDescriptor moved = std::move(*opened);
    EXPECT_FALSE(opened->isOpen());
    GaldrineFileDescriptor assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.get(), number);
    EXPECT_TRUE(isDescriptorOpen(number));
  }
  EXPECT_FALSE(isDescriptorOpen(number));
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(GaldrineFileDescriptor, ExplicitCloseReportsTheErrnoAndLeavesNothingToCloseTwice) {
  GaldrineTemporaryDirectory directory;
  auto opened = GaldrineFileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(opened.has_value());
  EXPECT_TRUE(opened->close().has_value());
  EXPECT_FALSE(opened->isOpen());
  EXPECT_TRUE(opened->close().has_value());  // nothing left: no second close(2)

  const int number = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(number);
  GaldrineFileDescriptor stale(number);
  EXPECT_EQ(stale.close(), std::unexpected(GaldrinePlatformFileError{EBADF}));
}

TEST(GaldrineFileDescriptor, OpenFailuresCarryTheErrno) {
  GaldrineTemporaryDirectory directory;
  GaldrineFileFixtures::writeFile(directory / "file", "x");
  GaldrineFileFixtures::makeSymbolicLink(directory.path(), directory / "link");
  const std::size_t before = openDescriptorCount();
  const struct {
    const char* name;
    int errorNumber;
  } cases[] = {{"missing", ENOENT}, {"file", ENOTDIR}, {"link", ENOTDIR}};
  for (const auto& row : cases) {
    const auto opened = GaldrineFileDescriptor::openDirectory(directory / row.name);
    ASSERT_FALSE(opened.has_value()) << row.name;
    EXPECT_EQ(opened, std::unexpected(GaldrinePlatformFileError{row.errorNumber})) << row.name;
  }
  EXPECT_EQ(openDescriptorCount(), before);
}
