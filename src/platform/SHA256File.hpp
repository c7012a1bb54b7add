#pragma once
// SHA256File gives the 32-byte digests that references carry: of a byte string, and of a
// file streamed in pieces so that a payload file of many megabytes is never held in memory.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <variant>

#include "platform/SHA256FileError.hpp"
#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"

namespace galdrine::platform {

// A file digest fails with this module's own case, or with the file error of the platform as it
// came (which call failed and its errno).
using SHA256FileFailure = std::variant<SHA256FileError, FileError>;

namespace SHA256File {

inline constexpr std::size_t digestByteCount = 32;
inline constexpr std::int64_t defaultReadChunkByteCount = 1'048'576;

// A read piece never exceeds this, whatever chunk size is asked for: a larger request gives the
// same digest, and memory stays bounded by a constant rather than by a caller's number.
inline constexpr std::int64_t maximumReadBufferByteCount = 16 * defaultReadChunkByteCount;

// digest gives the 32 digest bytes of `data`.
[[nodiscard]] Bytes digest(ByteView data);

// digest gives the 32 digest bytes of the whole content of the regular file at `fileAt`, read
// at most `readChunkByteCount` bytes at a time. Checks, in order: a chunk size below 1 is
// invalidReadChunkByteCount, before the file is touched; the file is opened read-only without
// following a final symbolic link (the open's errno, ELOOP for a link); anything but a regular
// file is EINVAL, refused before a read that could block or never end; a failed read gives its
// errno. The descriptor is closed on every path, and no digest of
// part of a file is ever given.
[[nodiscard]] std::expected<Bytes, SHA256FileFailure> digest(const std::filesystem::path& fileAt,
                                                                 std::int64_t readChunkByteCount = defaultReadChunkByteCount);

}  // namespace SHA256File

}  // namespace galdrine::platform
