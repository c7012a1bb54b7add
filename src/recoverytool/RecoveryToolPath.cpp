#include "recoverytool/RecoveryToolPath.hpp"

#include <system_error>

namespace galdrine::recoverytool {

namespace RecoveryToolPath {

std::filesystem::path standardised(const std::filesystem::path& path, const std::filesystem::path& currentDirectory) {
  std::filesystem::path normal = (path.is_absolute() ? path : currentDirectory / path).lexically_normal();
  if (!normal.has_filename() && normal != normal.root_path()) normal = normal.parent_path();
  return normal;
}

std::expected<std::filesystem::path, RecoveryToolError> filePath(std::string_view argument) {
  const std::filesystem::path path(argument);
  if (path.is_absolute()) return standardised(path, path.root_path());
  std::error_code failure;
  const std::filesystem::path currentDirectory = std::filesystem::current_path(failure);
  if (failure || !currentDirectory.is_absolute()) return std::unexpected(RecoveryToolError::invalidArguments);
  return standardised(path, currentDirectory);
}

}  // namespace RecoveryToolPath

}  // namespace galdrine::recoverytool
