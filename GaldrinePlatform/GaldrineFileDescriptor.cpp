#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> GaldrineFileDescriptor::open(
    const std::filesystem::path& path, int flags, mode_t mode) {
  return openAt(AT_FDCWD, path, flags, mode);
}

std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> GaldrineFileDescriptor::openAt(
    int directory, const std::filesystem::path& name, int flags, mode_t mode) {
  int descriptor = -1;
  do {
    descriptor = ::openat(directory, name.c_str(), flags | O_CLOEXEC, mode);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return std::unexpected(GaldrinePlatformFileError::fromErrno());
  return GaldrineFileDescriptor(descriptor);
}

std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> GaldrineFileDescriptor::openDirectory(
    const std::filesystem::path& path) {
  return open(path, O_RDONLY | O_NOFOLLOW | O_DIRECTORY);
}

std::expected<void, GaldrinePlatformFileError> GaldrineFileDescriptor::close() noexcept {
  if (!isOpen()) return {};
  // Linux releases the descriptor even when close fails, so it is never retried.
  if (::close(release()) != 0) return std::unexpected(GaldrinePlatformFileError::fromErrno());
  return {};
}

void GaldrineFileDescriptor::closeIgnoringResult() noexcept {
  if (isOpen()) ::close(release());
}
