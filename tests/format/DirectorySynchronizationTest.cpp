#include "format/package/DirectorySynchronization.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>

#include "platform/FileDescriptor.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

using Outcome = DirectorySynchronizationOutcome;
using Error = DirectorySynchronizationError;
using namespace DirectorySynchronization;
using namespace testsupport::FileFixtures;

}  // namespace

TEST(DirectorySynchronization, SynchronisesOnlyARealDirectoryAndHoldsNothingOpen) {
  testsupport::TemporaryDirectory directory;
  makeDirectory(directory / "real");
  writeFile(directory / "file", "x");
  makeSymbolicLink(directory / "real", directory / "link");
  auto directoryDescriptor = platform::FileDescriptor::openDirectory(directory.path());
  auto fileDescriptor = platform::FileDescriptor::open(directory / "file", O_RDONLY);
  ASSERT_TRUE(directoryDescriptor.has_value() && fileDescriptor.has_value());
  const std::size_t before = testsupport::openDescriptorCount();
  EXPECT_EQ(synchronizeAfterMutation(directory / "real"), Outcome::synchronized);
  for (const char* name : {"file", "link", "missing"}) {
    EXPECT_EQ(synchronizeAfterMutation(directory / name), std::unexpected(Error::invalidDirectory())) << name;
  }
  {
    // EMFILE is no provider's refusal: the failed open is reported with its errno.
    ExhaustedDescriptors exhausted;
    EXPECT_EQ(synchronizeAfterMutation(directory / "real"), std::unexpected(Error::systemCallFailed(EMFILE)));
  }
  EXPECT_EQ(synchronizeAfterMutation(directoryDescriptor->get()), Outcome::synchronized);
  EXPECT_TRUE(isDescriptorOpen(directoryDescriptor->get()));  // the caller's descriptor stays open
  EXPECT_EQ(synchronizeAfterMutation(fileDescriptor->get()), std::unexpected(Error::invalidDirectory()));
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

TEST(DirectorySynchronization, ProviderSetHoldsExactlyTheRefusalsOfAProviderVolume) {
  for (const int member : {EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP, EPERM}) {
    EXPECT_EQ(outcomeOfFailedCall(member), Outcome::delegatedToFileProvider) << member;
  }
  EXPECT_EQ(outcomeOfFailedCall(EIO), std::unexpected(Error::systemCallFailed(EIO)));
}

}  // namespace galdrine::format
