#pragma once
// GaldrinePlatformFileError is what a failed file call leaves behind: which step failed and the
// errno it set, and nothing else (no path, no text). Callers that pass file errors on unchanged
// carry this value; callers with words of their own map it at their edge.

#include <cstdint>

struct GaldrinePlatformFileError {
  enum class Code : std::uint8_t {
    openFailed,      // open refused the path; errorNumber says why (ELOOP for a symbolic link)
    notRegularFile,  // the path names a directory, device, socket or pipe; errorNumber is 0
    readFailed,      // a read of an open file failed; errorNumber says why
  };

  Code code;
  int errorNumber = 0;

  [[nodiscard]] static GaldrinePlatformFileError openFailed(int errorNumber) { return {Code::openFailed, errorNumber}; }
  [[nodiscard]] static GaldrinePlatformFileError notRegularFile() { return {Code::notRegularFile, 0}; }
  [[nodiscard]] static GaldrinePlatformFileError readFailed(int errorNumber) { return {Code::readFailed, errorNumber}; }

  friend bool operator==(const GaldrinePlatformFileError&, const GaldrinePlatformFileError&) = default;
};
