#pragma once
// TemporaryDirectory makes a fresh private directory for one test and removes the
// whole tree when it goes out of scope.

#include <filesystem>

namespace galdrine::testsupport {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& child) const { return path_ / child; }

 private:
  std::filesystem::path path_;
};

}  // namespace galdrine::testsupport
