#pragma once
// Files: the small file operations every writer and reader needs, over raw
// descriptors. Each failure gives the errno of the call that failed, and nothing else.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>

#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"

namespace galdrine::platform {

namespace Files {

// writeAll writes every byte of `bytes`, resuming after short writes and interruptions. On
// failure an unknown prefix of `bytes` may have been written.
[[nodiscard]] std::expected<void, FileError> writeAll(int descriptor, ByteView bytes);

// synchronizeFile asks for the file's data and metadata to reach stable storage (fsync).
[[nodiscard]] std::expected<void, FileError> synchronizeFile(int descriptor);

// startWriteBack asks the kernel to begin writing `byteCount` bytes of the file from `offset`
// to its device, without waiting for them (sync_file_range with SYNC_FILE_RANGE_WRITE). It is
// only a hint that leaves less for a later synchronizeFile to wait for: it promises no
// durability, and a file system that refuses it loses nothing, so it reports no failure.
void startWriteBack(int descriptor, std::uint64_t offset, std::uint64_t byteCount) noexcept;

// readUpTo reads until end of file or until `maximumByteCount` bytes are held, whichever comes
// first. Memory grows with what is read, never past the bound. A caller that must refuse a
// longer file asks for one byte more than it accepts and checks the size.
[[nodiscard]] std::expected<Bytes, FileError> readUpTo(int descriptor, std::size_t maximumByteCount);

// moveRefusingExistingTarget renames `sourceName` (under `sourceDirectory`) to `targetName`
// (under `targetDirectory`) and fails with EEXIST if anything, a dangling symbolic link
// included, stands at the target. The kernel decides (renameat2 with RENAME_NOREPLACE), so no
// check races with the move. Where the file system refuses that flag, a regular file is moved
// by moveRegularFileByLinking instead; anything else then fails with the rename's errno. On
// failure the source stays where it was and nothing is created at the target. Directory
// descriptors may be AT_FDCWD.
[[nodiscard]] std::expected<void, FileError> moveRefusingExistingTarget(
    int sourceDirectory, const std::filesystem::path& sourceName, int targetDirectory,
    const std::filesystem::path& targetName);

[[nodiscard]] std::expected<void, FileError> moveRefusingExistingTarget(
    const std::filesystem::path& source, const std::filesystem::path& target);

// fileSystemRefusesNoReplaceFlag tells whether a renameat2 errno means that the file system
// does not offer RENAME_NOREPLACE, rather than that the move itself is wrong.
[[nodiscard]] constexpr bool fileSystemRefusesNoReplaceFlag(int errorNumber) {
  return errorNumber == EINVAL || errorNumber == ENOSYS;
}

// moveRegularFileByLinking moves a regular file with a hard link at the target, which refuses
// an existing target with EEXIST, then removes the source name. If the source name cannot be
// removed, the new link is removed again and the error of the first removal is given.
[[nodiscard]] std::expected<void, FileError> moveRegularFileByLinking(
    int sourceDirectory, const std::filesystem::path& sourceName, int targetDirectory,
    const std::filesystem::path& targetName);

}  // namespace Files

}  // namespace galdrine::platform
