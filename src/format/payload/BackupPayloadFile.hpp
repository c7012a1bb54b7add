#pragma once
// BackupPayloadFile is a payload file open for reading: a regular file, reached
// without following a symbolic link in its last component, whose length, taken from the open
// descriptor, is within the caller's bound. Reads are positioned and exact, and never reach
// past that length, so a hostile count cannot make one allocate more than the file holds.
// Every failure is invalidArtifact. The descriptor closes when the value goes away.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <utility>

#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

class BackupPayloadFile {
 public:
  // ReadBuffer holds bytes read from the file, in memory that is not zeroed by us first: a frame
  // of 16 MiB would otherwise be written twice before it is used once. A large buffer is mapped
  // on its own, asking for huge pages populated in one call, since faulting in thousands of
  // fresh pages one by one costs more than hashing them; a small one, or one the system will
  // not map, comes from the heap.
  class ReadBuffer {
   public:
    explicit ReadBuffer(std::size_t byteCount);
    ~ReadBuffer();
    ReadBuffer(ReadBuffer&& other) noexcept;
    ReadBuffer& operator=(ReadBuffer&&) = delete;
    ReadBuffer(const ReadBuffer&) = delete;
    ReadBuffer& operator=(const ReadBuffer&) = delete;

    [[nodiscard]] ByteView view() const { return {bytes_, byteCount_}; }
    [[nodiscard]] std::span<std::uint8_t> span() { return {bytes_, byteCount_}; }

   private:
    std::uint8_t* bytes_ = nullptr;
    std::size_t byteCount_ = 0;
    bool mapped_ = false;
  };

  // HashedRead is a read together with the SHA-256 of its bytes, taken piece by piece as the
  // pieces arrive, while each is still in the processor's cache: one pass over memory fewer than
  // reading first and hashing after.
  struct HashedRead {
    ReadBuffer bytes;
    platform::SHA256Digest digest;
  };

  // open opens `name` under `directory` (AT_FDCWD for a path) read-only and non-blocking, so a
  // FIFO put in a file's place cannot stall it, and keeps it only if it is a regular file of
  // at most `maximumByteCount` bytes.
  [[nodiscard]] static std::expected<BackupPayloadFile, BackupPayloadV1Error> open(int directory,
                                                                                   const std::filesystem::path& name,
                                                                                   std::uint64_t maximumByteCount);

  [[nodiscard]] std::uint64_t byteCount() const { return byteCount_; }

  // readInto fills all of `bytes` from `offset`; a range past the length or a short read fails.
  [[nodiscard]] std::expected<void, BackupPayloadV1Error> readInto(std::uint64_t offset,
                                                                   std::span<std::uint8_t> bytes) const;

  // readHashed gives exactly `byteCount` bytes from `offset`, allocated only once the range is
  // known to lie inside the file, and their digest.
  [[nodiscard]] std::expected<HashedRead, BackupPayloadV1Error> readHashed(std::uint64_t offset,
                                                                           std::uint64_t byteCount) const;

 private:
  BackupPayloadFile(platform::FileDescriptor descriptor, std::uint64_t byteCount)
      : descriptor_(std::move(descriptor)), byteCount_(byteCount) {}

  platform::FileDescriptor descriptor_;
  std::uint64_t byteCount_;
};

}  // namespace galdrine::format
