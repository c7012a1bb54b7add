#pragma once
// Files: the small file operations every writer and reader needs, over raw descriptors,
// and the one bounded read of a whole small file. Each failure gives the errno of the call
// that failed, and nothing else.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>

#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"

namespace galdrine::platform {

// BoundedFileReadFault says which step of readBoundedRegularFile refused the file; each caller
// maps it to its own error.
struct BoundedFileReadFault {
  enum class Kind : std::uint8_t {
    openFailed,      // errorNumber says why; ELOOP for a symbolic link, ENOENT for nothing there
    statusFailed,    // fstat failed; errorNumber says why
    notRegularFile,  // a directory, device, pipe or socket
    sizeOutOfRange,  // the size seen by fstat lies outside the caller's range
    readFailed,      // errorNumber says why
    sizeChanged,     // the bytes read differ in number from the size seen before
  };

  Kind kind;
  std::int32_t errorNumber = 0;

  friend constexpr bool operator==(const BoundedFileReadFault&, const BoundedFileReadFault&) = default;
};

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

// readBoundedRegularFile is the one way a small file of untrusted content is read whole: the
// path is opened read-only without following a final symbolic link, the open descriptor must
// be a regular file whose size lies within the caller's range, at most one byte more than the
// upper bound is ever read, and the bytes read must number exactly the size seen before. The
// descriptor is closed on every path; on a fault no byte of the file is given.
[[nodiscard]] std::expected<Bytes, BoundedFileReadFault> readBoundedRegularFile(const std::filesystem::path& filePath,
                                                                                std::size_t minimumByteCount,
                                                                                std::size_t maximumByteCount);

// moveRefusingExistingTarget renames `sourceName` (under `sourceDirectory`) to `targetName`
// (under `targetDirectory`) and fails with EEXIST if anything, a dangling symbolic link
// included, stands at the target. The kernel decides (renameat2 with RENAME_NOREPLACE), so no
// check races with the move. Where the file system refuses that flag, a regular file is moved
// by moveRegularFileByLinking instead; anything else then fails with the rename's errno. On
// failure the source stays where it was and nothing is created at the target. Directory
// descriptors may be AT_FDCWD.
[[nodiscard]] std::expected<void, FileError> moveRefusingExistingTarget(int sourceDirectory,
                                                                        const std::filesystem::path& sourceName,
                                                                        int targetDirectory,
                                                                        const std::filesystem::path& targetName);

[[nodiscard]] std::expected<void, FileError> moveRefusingExistingTarget(const std::filesystem::path& sourcePath,
                                                                        const std::filesystem::path& targetPath);

// moveRegularFileByLinking moves a regular file with a hard link at the target, which refuses
// an existing target with EEXIST, then removes the source name. If the source name cannot be
// removed, the new link is removed again and the error of the first removal is given.
[[nodiscard]] std::expected<void, FileError> moveRegularFileByLinking(int sourceDirectory,
                                                                      const std::filesystem::path& sourceName,
                                                                      int targetDirectory,
                                                                      const std::filesystem::path& targetName);

}  // namespace Files

}  // namespace galdrine::platform
