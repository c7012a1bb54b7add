#pragma once
// GaldrineTemporaryDirectory makes a fresh private directory for one test and removes the
// whole tree when it goes out of scope.

#include <filesystem>

class GaldrineTemporaryDirectory {
 public:
  GaldrineTemporaryDirectory();
  ~GaldrineTemporaryDirectory();
  GaldrineTemporaryDirectory(const GaldrineTemporaryDirectory&) = delete;
  GaldrineTemporaryDirectory& operator=(const GaldrineTemporaryDirectory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& child) const { return path_ / child; }

 private:
  std::filesystem::path path_;
};
