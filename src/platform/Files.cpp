#include "platform/Files.hpp"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace galdrine::platform {

namespace Files {

namespace {

// Reads grow the buffer in steps of this size, so a large bound costs nothing for a small file.
constexpr std::size_t readStepByteCount = 65536;

[[nodiscard]] std::unexpected<FileError> lastError() {
  return std::unexpected(FileError::fromErrno());
}

[[nodiscard]] bool isRegularFile(int directory, const std::filesystem::path& name) {
  struct stat status{};
  return ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::expected<void, FileError> writeAll(int descriptor, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return lastError();
    }
    // A write that takes nothing from a non-empty buffer would loop for ever.
    if (written == 0) return std::unexpected(FileError{EIO});
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return {};
}

std::expected<void, FileError> synchronizeFile(int descriptor) {
  while (::fsync(descriptor) != 0) {
    if (errno != EINTR) return lastError();
  }
  return {};
}

void startWriteBack(int descriptor, std::uint64_t offset, std::uint64_t byteCount) noexcept {
  constexpr auto largestOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
  if (byteCount == 0 || offset > largestOffset || byteCount > largestOffset - offset) return;
  ::sync_file_range(descriptor, static_cast<off_t>(offset), static_cast<off_t>(byteCount), SYNC_FILE_RANGE_WRITE);
}

std::expected<Bytes, FileError> readUpTo(int descriptor, std::size_t maximumByteCount) {
  Bytes bytes;
  std::size_t heldByteCount = 0;
  while (heldByteCount < maximumByteCount) {
    bytes.resize(heldByteCount + std::min(readStepByteCount, maximumByteCount - heldByteCount));
    const ssize_t count = ::read(descriptor, bytes.data() + heldByteCount, bytes.size() - heldByteCount);
    if (count < 0) {
      if (errno == EINTR) continue;
      return lastError();
    }
    if (count == 0) break;
    heldByteCount += static_cast<std::size_t>(count);
  }
  bytes.resize(heldByteCount);
  return bytes;
}

std::expected<void, FileError> moveRefusingExistingTarget(int sourceDirectory,
                                                                         const std::filesystem::path& sourceName,
                                                                         int targetDirectory,
                                                                         const std::filesystem::path& targetName) {
  if (::renameat2(sourceDirectory, sourceName.c_str(), targetDirectory, targetName.c_str(), RENAME_NOREPLACE) == 0) {
    return {};
  }
  const FileError renameError = FileError::fromErrno();
  if (!fileSystemRefusesNoReplaceFlag(renameError.errorNumber) || !isRegularFile(sourceDirectory, sourceName)) {
    return std::unexpected(renameError);
  }
  return moveRegularFileByLinking(sourceDirectory, sourceName, targetDirectory, targetName);
}

std::expected<void, FileError> moveRefusingExistingTarget(const std::filesystem::path& source,
                                                                         const std::filesystem::path& target) {
  return moveRefusingExistingTarget(AT_FDCWD, source, AT_FDCWD, target);
}

std::expected<void, FileError> moveRegularFileByLinking(int sourceDirectory,
                                                                       const std::filesystem::path& sourceName,
                                                                       int targetDirectory,
                                                                       const std::filesystem::path& targetName) {
  if (::linkat(sourceDirectory, sourceName.c_str(), targetDirectory, targetName.c_str(), 0) != 0) return lastError();
  if (::unlinkat(sourceDirectory, sourceName.c_str(), 0) != 0) {
    const FileError unlinkError = FileError::fromErrno();
    ::unlinkat(targetDirectory, targetName.c_str(), 0);  // undo: the move did not happen
    return std::unexpected(unlinkError);
  }
  return {};
}

}  // namespace Files

}  // namespace galdrine::platform
