#include "format/package/DirectorySynchronization.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/FileDescriptor.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

using Outcome = DirectorySynchronizationOutcome;
using Error = DirectorySynchronizationError;
using DirectorySynchronization::synchronizeAfterMutation;

TEST(DirectorySynchronization, ByPathSynchronisesOnlyARealDirectory) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "real");
  testsupport::FileFixtures::writeFile(directory / "file", "x");
  testsupport::FileFixtures::makeSymbolicLink(directory / "real", directory / "link");
  const std::size_t before = testsupport::openDescriptorCount();
  EXPECT_EQ(synchronizeAfterMutation(directory / "real"), Outcome::synchronized);
  for (const char* name : {"file", "link", "missing"}) {
    EXPECT_EQ(synchronizeAfterMutation(directory / name), std::unexpected(Error::invalidDirectory())) << name;
  }
  {
    // EMFILE is no provider's refusal: the failed open is reported with its errno.
    testsupport::FileFixtures::ExhaustedDescriptors exhausted;
    EXPECT_EQ(synchronizeAfterMutation(directory / "real"), std::unexpected(Error::systemCallFailed(EMFILE)));
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

TEST(DirectorySynchronization, ByDescriptorLeavesTheDescriptorOpen) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::writeFile(directory / "file", "x");
  auto directoryDescriptor = platform::FileDescriptor::openDirectory(directory.path());
  auto fileDescriptor = platform::FileDescriptor::open(directory / "file", O_RDONLY);
  ASSERT_TRUE(directoryDescriptor.has_value() && fileDescriptor.has_value());
  const std::size_t before = testsupport::openDescriptorCount();

  EXPECT_EQ(synchronizeAfterMutation(directoryDescriptor->get()), Outcome::synchronized);
  EXPECT_TRUE(testsupport::FileFixtures::isDescriptorOpen(directoryDescriptor->get()));
  EXPECT_EQ(synchronizeAfterMutation(fileDescriptor->get()), std::unexpected(Error::invalidDirectory()));
  EXPECT_EQ(synchronizeAfterMutation(-1), std::unexpected(Error::invalidDirectory()));
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

TEST(DirectorySynchronization, ProviderSetHoldsExactlyTheRefusalsOfAProviderVolume) {
  for (const int member : {EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP, EPERM}) {
    EXPECT_TRUE(DirectorySynchronization::providerOwnsDirectoryDurability(member)) << member;
    EXPECT_EQ(DirectorySynchronization::outcomeOfFailedCall(member), Outcome::delegatedToFileProvider) << member;
  }
  // The system's own values stand for the names, not another platform's numbers.
  EXPECT_TRUE(DirectorySynchronization::providerOwnsDirectoryDurability(38));  // ENOSYS here
  EXPECT_TRUE(DirectorySynchronization::providerOwnsDirectoryDurability(95));  // ENOTSUP here
  for (const int other : {0, EIO, ENOENT, EMFILE, ENOSPC, EROFS, EDQUOT, ENOTDIR, 78, 45, 102}) {
    EXPECT_FALSE(DirectorySynchronization::providerOwnsDirectoryDurability(other)) << other;
  }
  EXPECT_EQ(DirectorySynchronization::outcomeOfFailedCall(EIO), std::unexpected(Error::systemCallFailed(EIO)));
}

}  // namespace

}  // namespace galdrine::format
