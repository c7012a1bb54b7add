#pragma once
// FilePath: file paths are std::filesystem::path values. standardized gives the form the
// rest of the system compares and checks: "." and ".." segments removed, and no trailing
// separator, which only marks a directory and is no component of its own ("/" stays "/").

#include <filesystem>

namespace galdrine::platform {

namespace FilePath {

[[nodiscard]] inline std::filesystem::path standardized(const std::filesystem::path& path) {
  std::filesystem::path normal = path.lexically_normal();
  if (normal.has_relative_path() && !normal.has_filename()) normal = normal.parent_path();
  return normal;
}

}  // namespace FilePath

}  // namespace galdrine::platform
