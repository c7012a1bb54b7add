#pragma once
// readBoundedRegularFile is the one way a small file of untrusted content is read whole: the
// path is opened read-only without following a final symbolic link, the open descriptor must
// be a regular file whose size lies within the caller's range, at most one byte more than the
// upper bound is ever read, and the bytes read must number exactly the size seen before. The
// descriptor is closed on every path. Each caller maps the fault to its own error.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

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

[[nodiscard]] std::expected<Bytes, BoundedFileReadFault> readBoundedRegularFile(const std::filesystem::path& path,
                                                                                      std::size_t minimumByteCount,
                                                                                      std::size_t maximumByteCount);

}  // namespace Files

}  // namespace galdrine::platform
