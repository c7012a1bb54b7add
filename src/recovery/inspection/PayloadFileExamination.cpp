#include "recovery/inspection/PayloadFileExamination.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "format/payload/BackupPayloadV1.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Examination = PayloadFileExamination;

// sameFile tells whether two fstat results describe one file that did not change in between.
[[nodiscard]] bool sameFile(const struct stat& before, const struct stat& after) {
  return before.st_dev == after.st_dev && before.st_ino == after.st_ino && before.st_size == after.st_size &&
         before.st_mtim.tv_sec == after.st_mtim.tv_sec && before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

// readPiece reads once into `buffer`, resuming after an interruption.
[[nodiscard]] ssize_t readPiece(int descriptor, std::span<std::uint8_t> buffer) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer.data(), buffer.size());
  } while (count < 0 && errno == EINTR);
  return count;
}

// streamedDigest hashes the file from its current position to its end, one piece at a time.
// It gives nothing for a failed read or for another number of bytes than `byteCount`; it
// stops as soon as more arrive, so that a file that keeps growing cannot keep the loop going.
[[nodiscard]] std::optional<platform::SHA256Digest> streamedDigest(int descriptor, const fs::path& path,
                                                                   std::uint64_t byteCount,
                                                                   std::span<std::uint8_t> buffer,
                                                                   const RecoveryPayloadReadObserver& observer) {
  platform::SHA256::Hasher hasher;
  std::uint64_t readByteCount = 0;
  while (true) {
    const ssize_t count = readPiece(descriptor, buffer);
    if (count < 0) return std::nullopt;
    if (observer) observer(path, static_cast<std::size_t>(count));
    if (count == 0) break;
    readByteCount += static_cast<std::uint64_t>(count);
    if (readByteCount > byteCount) return std::nullopt;
    hasher.update(buffer.first(static_cast<std::size_t>(count)));
  }
  if (readByteCount != byteCount) return std::nullopt;
  return hasher.finalize();
}

}  // namespace

std::optional<fs::path> payloadFilePath(const format::BackupPackageV1& package, ByteView artifactIdentifier,
                                        format::BackupPayloadContainerKindV1 container) {
  const bool isChunk = container == format::BackupPayloadContainerKindV1::chunk;
  const auto directory = package.directoryPath(isChunk ? "objects" : "packs");
  if (!directory) return std::nullopt;
  const auto name = isChunk ? format::BackupPayloadV1::resourceChunkFileName(artifactIdentifier)
                            : format::BackupPayloadV1::packSegmentFileName(artifactIdentifier);
  if (!name) return std::nullopt;
  return *directory / *name;
}

namespace PayloadFileExaminations {

Examination examine(const fs::path& path, std::uint64_t byteCount, ByteView sha256, std::span<std::uint8_t> buffer,
                    const RecoveryPayloadReadObserver& observer) {
  struct stat linkStatus {};
  if (::lstat(path.c_str(), &linkStatus) != 0) {
    return errno == ENOENT ? Examination::missing : Examination::statusUnavailable;
  }
  // Non-blocking, so that a pipe put in the file's place cannot stall the open.
  const auto descriptor = platform::FileDescriptor::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return Examination::openRefused;
  struct stat before {};
  if (::fstat(descriptor->get(), &before) != 0) return Examination::descriptorStatusFailed;
  if (!S_ISREG(before.st_mode)) return Examination::notRegularFile;
  if (before.st_size < 1 || static_cast<std::uint64_t>(before.st_size) != byteCount) return Examination::wrongByteCount;
  static_cast<void>(::posix_fadvise(descriptor->get(), 0, 0, POSIX_FADV_SEQUENTIAL));
  const auto digest = streamedDigest(descriptor->get(), path, byteCount, buffer, observer);
  if (!digest) return Examination::readFailed;
  struct stat after {};
  if (::fstat(descriptor->get(), &after) != 0 || !sameFile(before, after)) return Examination::changedWhileRead;
  return ByteOrder::equal(*digest, sha256) ? Examination::matching : Examination::wrongDigest;
}

}  // namespace PayloadFileExaminations

}  // namespace galdrine::recovery
