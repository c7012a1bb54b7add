#pragma once
// GaldrinePlatformFileError is a failed file-system call: the errno it left, and nothing else.
// No path and no text travel with it.

#include <cerrno>
#include <cstdint>

struct GaldrinePlatformFileError {
  std::int32_t errorNumber;

  // fromErrno captures the errno of the call that just failed.
  [[nodiscard]] static GaldrinePlatformFileError fromErrno() { return {errno}; }

  friend constexpr bool operator==(const GaldrinePlatformFileError&, const GaldrinePlatformFileError&) = default;
};
