#include "platform/SHA256File.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/SHA256.hpp"
#include "platform/FileDescriptor.hpp"

namespace galdrine::platform {

namespace {

Bytes bytesOf(const SHA256Digest& digest) { return Bytes(digest.begin(), digest.end()); }

// readPiece reads up to `buffer.size()` bytes, retrying a read interrupted by a signal. It gives
// the byte count, zero at the end of the file, or -1 with errno set.
ssize_t readPiece(int descriptor, std::span<std::uint8_t> buffer) {
  ssize_t result = 0;
  do {
    result = ::read(descriptor, buffer.data(), buffer.size());
  } while (result < 0 && errno == EINTR);
  return result;
}

// The buffer never outgrows the file as it was when opened (a growing file is still read to its
// end, in more pieces), nor the fixed ceiling.
std::size_t bufferByteCount(std::int64_t readChunkByteCount, const struct stat& status) {
  const std::int64_t fileByteCount = std::max<std::int64_t>(status.st_size, 1);
  return static_cast<std::size_t>(
      std::min({readChunkByteCount, fileByteCount, SHA256File::maximumReadBufferByteCount}));
}

std::expected<Bytes, SHA256FileFailure> digestOfOpenFile(int descriptor, std::int64_t readChunkByteCount) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return std::unexpected(FileError::fromErrno());
  // Only a regular file has an end to read to; anything else is refused as an invalid argument.
  if (!S_ISREG(status.st_mode)) return std::unexpected(FileError{EINVAL});

  Bytes buffer(bufferByteCount(readChunkByteCount, status));
  SHA256::Hasher hasher;
  while (true) {
    const ssize_t readByteCount = readPiece(descriptor, buffer);
    if (readByteCount < 0) return std::unexpected(FileError::fromErrno());
    if (readByteCount == 0) break;
    hasher.update(ByteView(buffer).first(static_cast<std::size_t>(readByteCount)));
  }
  return bytesOf(hasher.finalize());
}

}  // namespace

namespace SHA256File {

Bytes digest(ByteView data) { return bytesOf(SHA256::digest(data)); }

std::expected<Bytes, SHA256FileFailure> digest(const std::filesystem::path& fileAt, std::int64_t readChunkByteCount) {
  if (readChunkByteCount < 1) return std::unexpected(SHA256FileError::invalidReadChunkByteCount);
  // Non-blocking, so that opening a pipe with no writer returns at once and is then refused.
  const auto descriptor = FileDescriptor::open(fileAt, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return std::unexpected(descriptor.error());
  return digestOfOpenFile(descriptor->get(), readChunkByteCount);
}

}  // namespace SHA256File

}  // namespace galdrine::platform
