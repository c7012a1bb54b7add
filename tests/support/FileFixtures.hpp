#pragma once
// Small builders of real file-system shapes for tests: files with given bytes, directories,
// symbolic links, and a scope in which the next descriptor cannot be opened.

#include <sys/resource.h>

#include <filesystem>
#include <string_view>

#include "platform/Bytes.hpp"

namespace galdrine::testsupport {

namespace FileFixtures {

// writeFile creates or replaces a regular file holding exactly `bytes`.
void writeFile(const std::filesystem::path& path, ByteView bytes);
inline void writeFile(const std::filesystem::path& path, std::string_view text) {
  writeFile(path, ByteText::view(text));
}

[[nodiscard]] Bytes readFile(const std::filesystem::path& path);

void makeDirectory(const std::filesystem::path& path);
void makeSymbolicLink(const std::filesystem::path& target, const std::filesystem::path& link);

// isDescriptorOpen tells whether `descriptor` still names an open file of this process.
[[nodiscard]] bool isDescriptorOpen(int descriptor);

// ExhaustedDescriptors lowers the soft descriptor limit to the lowest free descriptor number,
// so that the next open, openat or opendir fails with EMFILE, until it goes out of scope.
class ExhaustedDescriptors {
 public:
  ExhaustedDescriptors();
  ~ExhaustedDescriptors();
  ExhaustedDescriptors(const ExhaustedDescriptors&) = delete;
  ExhaustedDescriptors& operator=(const ExhaustedDescriptors&) = delete;

 private:
  rlimit saved_{};
};

// LimitedFileSize lowers the file size limit to `byteCount` and ignores SIGXFSZ, so that a
// write past it fails with EFBIG instead of ending the process, until it goes out of scope.
class LimitedFileSize {
 public:
  explicit LimitedFileSize(rlim_t byteCount);
  ~LimitedFileSize();
  LimitedFileSize(const LimitedFileSize&) = delete;
  LimitedFileSize& operator=(const LimitedFileSize&) = delete;

 private:
  rlimit saved_{};
  void (*savedHandler_)(int) = nullptr;
};

}  // namespace FileFixtures

}  // namespace galdrine::testsupport
