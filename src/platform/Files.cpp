#include "platform/Files.hpp"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/FileDescriptor.hpp"

namespace galdrine::platform {

namespace Files {

namespace {

// Reads grow the buffer in steps of this size, so a large bound costs nothing for a small file.
constexpr std::size_t readStepByteCount = 65536;

[[nodiscard]] std::unexpected<FileError> lastError() { return std::unexpected(FileError::fromErrno()); }

[[nodiscard]] bool isRegularFile(int directory, const std::filesystem::path& name) {
  struct stat status {};
  return ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

// fileSystemRefusesNoReplaceFlag tells whether a renameat2 errno means that the file system
// does not offer RENAME_NOREPLACE, rather than that the move itself is wrong.
[[nodiscard]] constexpr bool fileSystemRefusesNoReplaceFlag(int errorNumber) {
  return errorNumber == EINVAL || errorNumber == ENOSYS;
}

[[nodiscard]] std::unexpected<BoundedFileReadFault> fault(BoundedFileReadFault::Kind kind,
                                                          std::int32_t errorNumber = 0) {
  return std::unexpected(BoundedFileReadFault{kind, errorNumber});
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

std::expected<Bytes, BoundedFileReadFault> readBoundedRegularFile(const std::filesystem::path& filePath,
                                                                  std::size_t minimumByteCount,
                                                                  std::size_t maximumByteCount) {
  using Kind = BoundedFileReadFault::Kind;
  // Non-blocking, so that a pipe put in the file's place cannot stall the open.
  const auto descriptor = FileDescriptor::open(filePath, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return fault(Kind::openFailed, descriptor.error().errorNumber);
  struct stat status {};
  if (::fstat(descriptor->get(), &status) != 0) return fault(Kind::statusFailed, errno);
  if (!S_ISREG(status.st_mode)) return fault(Kind::notRegularFile);
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (status.st_size < 0 || size < minimumByteCount || size > maximumByteCount) return fault(Kind::sizeOutOfRange);
  // One byte past the bound tells a file that grew after fstat from one that did not.
  const auto bytes = readUpTo(descriptor->get(), maximumByteCount + 1);
  if (!bytes) return fault(Kind::readFailed, bytes.error().errorNumber);
  if (bytes->size() != size) return fault(Kind::sizeChanged);
  return *bytes;
}

std::expected<void, FileError> moveRefusingExistingTarget(int sourceDirectory, const std::filesystem::path& sourceName,
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

std::expected<void, FileError> moveRefusingExistingTarget(const std::filesystem::path& sourcePath,
                                                          const std::filesystem::path& targetPath) {
  return moveRefusingExistingTarget(AT_FDCWD, sourcePath, AT_FDCWD, targetPath);
}

std::expected<void, FileError> moveRegularFileByLinking(int sourceDirectory, const std::filesystem::path& sourceName,
                                                        int targetDirectory, const std::filesystem::path& targetName) {
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
