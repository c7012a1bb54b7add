#include "format/package/DirectorySynchronization.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/FileDescriptor.hpp"

namespace galdrine::format {

namespace DirectorySynchronization {

namespace {

using Outcome = DirectorySynchronizationOutcome;
using Error = DirectorySynchronizationError;

// Linux gives ENOTSUP and EOPNOTSUPP one value; the list keeps both names all the same.
constexpr std::array<std::int32_t, 7> providerErrorNumbers{EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP, EPERM};

}  // namespace

bool providerOwnsDirectoryDurability(std::int32_t errorNumber) {
  return std::ranges::find(providerErrorNumbers, errorNumber) != providerErrorNumbers.end();
}

std::expected<Outcome, Error> outcomeOfFailedCall(std::int32_t errorNumber) {
  if (providerOwnsDirectoryDurability(errorNumber)) return Outcome::delegatedToFileProvider;
  return std::unexpected(Error::systemCallFailed(errorNumber));
}

std::expected<Outcome, Error> synchronizeAfterMutation(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISDIR(status.st_mode)) return std::unexpected(Error::invalidDirectory());
  if (::fsync(descriptor) != 0) return outcomeOfFailedCall(errno);
  return Outcome::synchronized;
}

std::expected<Outcome, Error> synchronizeAfterMutation(const std::filesystem::path& directory) {
  struct stat status {};
  // lstat, so that a symbolic link is refused here rather than followed.
  if (::lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::unexpected(Error::invalidDirectory());
  }
  auto descriptor = platform::FileDescriptor::openDirectory(directory);
  if (!descriptor) return outcomeOfFailedCall(descriptor.error().errorNumber);
  return synchronizeAfterMutation(descriptor->get());  // the descriptor closes whatever the result
}

}  // namespace DirectorySynchronization

}  // namespace galdrine::format
