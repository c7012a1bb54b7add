#include "GaldrineCore/GaldrineDirectorySynchronization.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineOpenDescriptorCount.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

using Outcome = GaldrineDirectorySynchronizationOutcome;
using Error = GaldrineDirectorySynchronizationError;
using GaldrineDirectorySynchronization::synchronizeAfterMutation;

TEST(GaldrineDirectorySynchronization, ByPathSynchronisesOnlyARealDirectory) {
  GaldrineTemporaryDirectory directory;
  GaldrineFileFixtures::makeDirectory(directory / "real");
  GaldrineFileFixtures::writeFile(directory / "file", "x");
  GaldrineFileFixtures::makeSymbolicLink(directory / "real", directory / "link");
  const std::size_t before = openDescriptorCount();
  EXPECT_EQ(synchronizeAfterMutation(directory / "real"), Outcome::synchronized);
  for (const char* name : {"file", "link", "missing"}) {
    EXPECT_EQ(synchronizeAfterMutation(directory / name), std::unexpected(Error::invalidDirectory())) << name;
  }
  {
    // EMFILE is no provider's refusal: the failed open is reported with its errno.
    GaldrineFileFixtures::ExhaustedDescriptors exhausted;
    EXPECT_EQ(synchronizeAfterMutation(directory / "real"), std::unexpected(Error::systemCallFailed(EMFILE)));
  }
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(GaldrineDirectorySynchronization, ByDescriptorLeavesTheDescriptorOpen) {
  GaldrineTemporaryDirectory directory;
  GaldrineFileFixtures::writeFile(directory / "file", "x");
  auto directoryDescriptor = GaldrineFileDescriptor::openDirectory(directory.path());
  auto fileDescriptor = GaldrineFileDescriptor::open(directory / "file", O_RDONLY);
  ASSERT_TRUE(directoryDescriptor.has_value() && fileDescriptor.has_value());
  const std::size_t before = openDescriptorCount();

  EXPECT_EQ(synchronizeAfterMutation(directoryDescriptor->get()), Outcome::synchronized);
  EXPECT_TRUE(GaldrineFileFixtures::isDescriptorOpen(directoryDescriptor->get()));
  EXPECT_EQ(synchronizeAfterMutation(fileDescriptor->get()), std::unexpected(Error::invalidDirectory()));
  EXPECT_EQ(synchronizeAfterMutation(-1), std::unexpected(Error::invalidDirectory()));
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(GaldrineDirectorySynchronization, ProviderSetHoldsExactlyTheRefusalsOfAProviderVolume) {
  for (const int member : {EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP, EPERM}) {
    EXPECT_TRUE(GaldrineDirectorySynchronization::providerOwnsDirectoryDurability(member)) << member;
    EXPECT_EQ(GaldrineDirectorySynchronization::outcomeOfFailedCall(member), Outcome::delegatedToFileProvider) << member;
  }
  // The system's own values stand for the names, not another platform's numbers.
  EXPECT_TRUE(GaldrineDirectorySynchronization::providerOwnsDirectoryDurability(38));  // ENOSYS here
  EXPECT_TRUE(GaldrineDirectorySynchronization::providerOwnsDirectoryDurability(95));  // ENOTSUP here
  for (const int other : {0, EIO, ENOENT, EMFILE, ENOSPC, EROFS, EDQUOT, ENOTDIR, 78, 45, 102}) {
    EXPECT_FALSE(GaldrineDirectorySynchronization::providerOwnsDirectoryDurability(other)) << other;
  }
  EXPECT_EQ(GaldrineDirectorySynchronization::outcomeOfFailedCall(EIO), std::unexpected(Error::systemCallFailed(EIO)));
}

}  // namespace
