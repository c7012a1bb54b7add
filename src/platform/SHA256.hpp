#pragma once
// SHA256 gives the 32-byte digests that the format's references carry: of a byte string at
// once, of bytes fed piece by piece, and of a file streamed in pieces so that a payload file of
// many megabytes is never held in memory. Only the file digest can fail; hashing itself has no
// failure a caller could act on, and a library that cannot hash stops the process instead of
// giving a wrong value.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <variant>

#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"

namespace galdrine::platform {

enum class SHA256Error : std::uint8_t {
  invalidReadChunkByteCount,
};

// A file digest fails with its own case, or with the file error as it came (the errno of the
// call that failed).
using SHA256Failure = std::variant<SHA256Error, FileError>;

using SHA256Digest = std::array<std::uint8_t, 32>;

namespace SHA256 {

inline constexpr std::size_t digestByteCount = SHA256Digest{}.size();
inline constexpr std::int64_t defaultReadChunkByteCount = 1'048'576;

// A read piece never exceeds this, whatever chunk size is asked for: a larger request gives the
// same digest, and memory stays bounded by a constant rather than by a caller's number.
inline constexpr std::int64_t maximumReadBufferByteCount = 16 * defaultReadChunkByteCount;

[[nodiscard]] SHA256Digest digest(ByteView bytes);

// digestOfFile gives the digest of the whole content of the regular file at `filePath`, read at
// most `readChunkByteCount` bytes at a time. Checks, in order: a chunk size below 1 is
// invalidReadChunkByteCount, before the file is touched; the file is opened read-only without
// following a final symbolic link (the open's errno, ELOOP for a link); anything but a regular
// file is EINVAL, refused before a read that could block or never end; a failed read gives its
// errno. The descriptor is closed on every path, and no digest of part of a file is ever given.
[[nodiscard]] std::expected<SHA256Digest, SHA256Failure> digestOfFile(
    const std::filesystem::path& filePath, std::int64_t readChunkByteCount = defaultReadChunkByteCount);

// Hasher takes bytes piece by piece. A hasher is used once: update any number of times,
// then finalize.
class Hasher {
 public:
  Hasher();
  ~Hasher();
  Hasher(Hasher&&) noexcept;
  Hasher& operator=(Hasher&&) noexcept;
  Hasher(const Hasher&) = delete;
  Hasher& operator=(const Hasher&) = delete;

  void update(ByteView bytes);
  [[nodiscard]] SHA256Digest finalize();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace SHA256

}  // namespace galdrine::platform
