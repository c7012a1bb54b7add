#pragma once
// GaldrineFileDescriptor owns one open file descriptor and closes it when it goes out of scope,
// on every way out. It is move-only; a moved-from or default-constructed value owns nothing.

#include <sys/types.h>

#include <expected>
#include <filesystem>

#include "GaldrinePlatform/GaldrinePlatformFileError.hpp"

class GaldrineFileDescriptor {
 public:
  GaldrineFileDescriptor() noexcept = default;
  explicit GaldrineFileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  ~GaldrineFileDescriptor() { closeIgnoringResult(); }

  GaldrineFileDescriptor(GaldrineFileDescriptor&& other) noexcept : descriptor_(other.release()) {}
  GaldrineFileDescriptor& operator=(GaldrineFileDescriptor&& other) noexcept {
    if (this != &other) {
      closeIgnoringResult();
      descriptor_ = other.release();
    }
    return *this;
  }
  GaldrineFileDescriptor(const GaldrineFileDescriptor&) = delete;
  GaldrineFileDescriptor& operator=(const GaldrineFileDescriptor&) = delete;

  // open and openAt are open(2) and openat(2) with O_CLOEXEC always added, so that no
  // descriptor of ours leaks into a child process. A failure gives the errno.
  [[nodiscard]] static std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> open(
      const std::filesystem::path& path, int flags, mode_t mode = 0);
  [[nodiscard]] static std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> openAt(
      int directory, const std::filesystem::path& name, int flags, mode_t mode = 0);

  // openDirectory opens `path` read-only, as a directory only, without following a symbolic
  // link in its last component.
  [[nodiscard]] static std::expected<GaldrineFileDescriptor, GaldrinePlatformFileError> openDirectory(
      const std::filesystem::path& path);

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
  [[nodiscard]] std::expected<void, GaldrinePlatformFileError> close() noexcept;

 private:
  void closeIgnoringResult() noexcept;

  int descriptor_ = -1;
};
