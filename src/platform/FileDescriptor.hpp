#pragma once
// FileDescriptor owns one open file descriptor and closes it when it goes out of scope,
// on every way out. It is move-only; a moved-from or default-constructed value owns nothing.

#include <sys/types.h>

#include <expected>
#include <filesystem>

#include "platform/FileError.hpp"

namespace galdrine::platform {

class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  ~FileDescriptor() { closeIgnoringResult(); }

  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      closeIgnoringResult();
      descriptor_ = other.release();
    }
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  // open and openAt are open(2) and openat(2) with O_CLOEXEC always added, so that no
  // descriptor of ours leaks into a child process. A failure gives the errno.
  [[nodiscard]] static std::expected<FileDescriptor, FileError> open(const std::filesystem::path& path, int flags,
                                                                     mode_t mode = 0);
  [[nodiscard]] static std::expected<FileDescriptor, FileError> openAt(int directory, const std::filesystem::path& name,
                                                                       int flags, mode_t mode = 0);

  // openDirectory opens `path` read-only, as a directory only, without following a symbolic
  // link in its last component.
  [[nodiscard]] static std::expected<FileDescriptor, FileError> openDirectory(const std::filesystem::path& path);

  [[nodiscard]] int get() const noexcept { return descriptor_; }
  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }

  // release hands the descriptor to the caller, who must close it; this value then owns nothing.
  [[nodiscard]] int release() noexcept {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
  }

  // close closes now and reports close's errno, which a writer must not ignore. The descriptor
  // is gone afterwards whatever the result; it is never closed twice.
  [[nodiscard]] std::expected<void, FileError> close() noexcept;

 private:
  void closeIgnoringResult() noexcept;

  int descriptor_ = -1;
};

}  // namespace galdrine::platform
