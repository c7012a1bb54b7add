#include "platform/FileDescriptor.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>

#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

using testsupport::FileFixtures::isDescriptorOpen;

// The descriptor is close-on-exec, passes through moves intact and is closed by its last owner,
// whether at the end of its scope or by close, and never twice.
TEST(FileDescriptor, ClosesOnceByItsLastOwner) {
  const testsupport::TemporaryDirectory directory;
  auto opened = FileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(opened.has_value());
  const int number = opened->get();
  EXPECT_NE(::fcntl(number, F_GETFD) & FD_CLOEXEC, 0);
  {
    FileDescriptor moved(std::move(*opened));
    FileDescriptor assigned;
    assigned = std::move(moved);
    EXPECT_FALSE(opened->isOpen() || moved.isOpen());
    EXPECT_EQ(assigned.get(), number);
  }
  EXPECT_FALSE(isDescriptorOpen(number));

  auto closing = FileDescriptor::openDirectory(directory.path());
  ASSERT_TRUE(closing && closing->close());
  EXPECT_TRUE(closing->close().has_value());  // nothing left: no second close(2)
}

}  // namespace galdrine::platform
