#pragma once
// FilePath: file paths are std::filesystem::path values. standardized gives the form the
// rest of the system compares and checks: "." and ".." segments removed, and no trailing
// separator, which only marks a directory and is no component of its own ("/" stays "/").

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace galdrine::platform {

// FilePathError: a relative path argument met a current directory that cannot be named.
enum class FilePathError : std::uint8_t {
  currentDirectoryUnavailable,
};

namespace FilePath {

[[nodiscard]] inline std::filesystem::path standardized(const std::filesystem::path& path) {
  std::filesystem::path normal = path.lexically_normal();
  if (normal.has_relative_path() && !normal.has_filename()) normal = normal.parent_path();
  return normal;
}

// fromArgument turns a path given on a command line into the location a command works on:
// made absolute against the current directory, then standardized. It is lexical only:
// symbolic links are not resolved and nothing is looked at on disk, so whether the path
// exists, and what it is, is for the command to find out. An absolute argument never asks
// for the current directory.
[[nodiscard]] inline std::expected<std::filesystem::path, FilePathError> fromArgument(std::string_view argument) {
  const std::filesystem::path path(argument);
  if (path.is_absolute()) return standardized(path);
  std::error_code failure;
  const std::filesystem::path currentDirectory = std::filesystem::current_path(failure);
  if (failure || !currentDirectory.is_absolute()) return std::unexpected(FilePathError::currentDirectoryUnavailable);
  return standardized(currentDirectory / path);
}

}  // namespace FilePath

}  // namespace galdrine::platform
