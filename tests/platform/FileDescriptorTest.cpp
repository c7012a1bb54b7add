#include "platform/FileDescriptor.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <utility>

#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

using testsupport::FileFixtures::isDescriptorOpen;

TEST(FileDescriptor, ClosesOnEveryWayOutAndOnlyOnce) {
  testsupport::TemporaryDirectory directory;
  const std::size_t before = testsupport::openDescriptorCount();
  int number = -1;
  {
    auto opened = FileDescriptor::openDirectory(directory.path());
    ASSERT_TRUE(opened.has_value());
    number = opened->get();
    EXPECT_NE(::fcntl(number, F_GETFD) & FD_CLOEXEC, 0);
    FileDescriptor moved = std::move(*opened);
    EXPECT_FALSE(opened->isOpen());
    FileDescriptor assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.get(), number);
    EXPECT_TRUE(isDescriptorOpen(number));
  }
  EXPECT_FALSE(isDescriptorOpen(number));
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

TEST(FileDescriptor, ExplicitCloseReportsTheErrnoAndLeavesNothingToCloseTwice) {
  testsupport::TemporaryDirectory directory;
  auto opened = FileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(opened.has_value());
  EXPECT_TRUE(opened->close().has_value());
  EXPECT_FALSE(opened->isOpen());
  EXPECT_TRUE(opened->close().has_value());  // nothing left: no second close(2)

  const int number = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(number);
  FileDescriptor stale(number);
  EXPECT_EQ(stale.close(), std::unexpected(FileError{EBADF}));
}

TEST(FileDescriptor, OpenFailuresCarryTheErrno) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::writeFile(directory / "file", "x");
  testsupport::FileFixtures::makeSymbolicLink(directory.path(), directory / "link");
  const std::size_t before = testsupport::openDescriptorCount();
  const struct {
    const char* name;
    int errorNumber;
  } cases[] = {{"missing", ENOENT}, {"file", ENOTDIR}, {"link", ENOTDIR}};
  for (const auto& row : cases) {
    const auto opened = FileDescriptor::openDirectory(directory / row.name);
    ASSERT_FALSE(opened.has_value()) << row.name;
    EXPECT_EQ(opened, std::unexpected(FileError{row.errorNumber})) << row.name;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

}  // namespace galdrine::platform
