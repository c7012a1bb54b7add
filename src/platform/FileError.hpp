#pragma once
// FileError is a failed file-system call: the errno it left, and nothing else.
// No path and no text travel with it.

#include <cerrno>
#include <cstdint>

namespace galdrine::platform {

struct FileError {
  std::int32_t errorNumber;

  // fromErrno captures the errno of the call that just failed.
  [[nodiscard]] static FileError fromErrno() { return {errno}; }

  friend constexpr bool operator==(const FileError&, const FileError&) = default;
};

}  // namespace galdrine::platform
