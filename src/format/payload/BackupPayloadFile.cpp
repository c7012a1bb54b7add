#include "format/payload/BackupPayloadFile.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace galdrine::format {

namespace {

using Error = BackupPayloadV1Error;

[[nodiscard]] std::unexpected<Error> invalidArtifact() { return std::unexpected(Error::invalidArtifact()); }

// Pieces of a hashed read are small enough to stay in the processor's cache until they are hashed.
constexpr std::size_t hashedPieceByteCount = 256 * 1024;

// Below this size the heap serves a buffer without faulting in fresh pages.
constexpr std::size_t smallestMappedByteCount = 1024 * 1024;

}  // namespace

BackupPayloadFile::ReadBuffer::ReadBuffer(std::size_t byteCount) : byteCount_(byteCount) {
  if (byteCount >= smallestMappedByteCount) {
    void* mapped = ::mmap(nullptr, byteCount, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped != MAP_FAILED) {
      // Huge pages where the system grants them, and all pages faulted in by one call; each
      // request only speeds things up, so a refusal changes nothing but the time taken.
      static_cast<void>(::madvise(mapped, byteCount, MADV_HUGEPAGE));
      static_cast<void>(::madvise(mapped, byteCount, MADV_POPULATE_WRITE));
      bytes_ = static_cast<std::uint8_t*>(mapped);
      mapped_ = true;
      return;
    }
  }
  bytes_ = new std::uint8_t[byteCount];  // default-initialised: not zeroed
}

BackupPayloadFile::ReadBuffer::~ReadBuffer() {
  if (mapped_) {
    ::munmap(bytes_, byteCount_);
  } else {
    delete[] bytes_;
  }
}

BackupPayloadFile::ReadBuffer::ReadBuffer(ReadBuffer&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)),
      byteCount_(std::exchange(other.byteCount_, 0)),
      mapped_(std::exchange(other.mapped_, false)) {}

std::expected<BackupPayloadFile, Error> BackupPayloadFile::open(int directory, const std::filesystem::path& name,
                                                                std::uint64_t maximumByteCount) {
  auto descriptor = platform::FileDescriptor::openAt(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return invalidArtifact();
  struct stat status {};
  if (::fstat(descriptor->get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0 ||
      static_cast<std::uint64_t>(status.st_size) > maximumByteCount)
    return invalidArtifact();
  return BackupPayloadFile(std::move(*descriptor), static_cast<std::uint64_t>(status.st_size));
}

std::expected<void, Error> BackupPayloadFile::readInto(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  if (offset > byteCount_ || bytes.size() > byteCount_ - offset) return invalidArtifact();
  std::size_t heldByteCount = 0;
  while (heldByteCount < bytes.size()) {
    const ssize_t count = ::pread(descriptor_.get(), bytes.data() + heldByteCount, bytes.size() - heldByteCount,
                                  static_cast<off_t>(offset + heldByteCount));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return invalidArtifact();  // a failure, or a file that shrank since it was opened
    heldByteCount += static_cast<std::size_t>(count);
  }
  return {};
}

std::expected<BackupPayloadFile::HashedRead, Error> BackupPayloadFile::readHashed(std::uint64_t offset,
                                                                                  std::uint64_t byteCount) const {
  if (offset > byteCount_ || byteCount > byteCount_ - offset) return invalidArtifact();
  ReadBuffer buffer(static_cast<std::size_t>(byteCount));
  platform::SHA256::Hasher hasher;
  const std::span<std::uint8_t> bytes = buffer.span();
  for (std::size_t start = 0; start < bytes.size(); start += hashedPieceByteCount) {
    const std::span<std::uint8_t> piece = bytes.subspan(start, std::min(hashedPieceByteCount, bytes.size() - start));
    if (auto filled = readInto(offset + start, piece); !filled) return std::unexpected(filled.error());
    hasher.update(piece);
  }
  return HashedRead{std::move(buffer), hasher.finalize()};
}

}  // namespace galdrine::format
