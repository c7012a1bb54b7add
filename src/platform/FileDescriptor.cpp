#include "platform/FileDescriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

namespace galdrine::platform {

std::expected<FileDescriptor, FileError> FileDescriptor::open(const std::filesystem::path& path, int flags,
                                                              mode_t mode) {
  return openAt(AT_FDCWD, path, flags, mode);
}

std::expected<FileDescriptor, FileError> FileDescriptor::openAt(int directory, const std::filesystem::path& name,
                                                                int flags, mode_t mode) {
  int descriptor = -1;
  do {
    descriptor = ::openat(directory, name.c_str(), flags | O_CLOEXEC, mode);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return std::unexpected(FileError::fromErrno());
  return FileDescriptor(descriptor);
}

std::expected<FileDescriptor, FileError> FileDescriptor::openDirectory(const std::filesystem::path& path) {
  return open(path, O_RDONLY | O_NOFOLLOW | O_DIRECTORY);
}

std::expected<void, FileError> FileDescriptor::close() noexcept {
  if (!isOpen()) return {};
  // Linux releases the descriptor even when close fails, so it is never retried.
  if (::close(release()) != 0) return std::unexpected(FileError::fromErrno());
  return {};
}

void FileDescriptor::closeIgnoringResult() noexcept {
  if (isOpen()) ::close(release());
}

}  // namespace galdrine::platform
