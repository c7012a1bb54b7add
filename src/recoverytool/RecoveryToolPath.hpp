#pragma once
// RecoveryToolPath turns a path argument into the location a command works on: absolute,
// with "." and ".." segments removed lexically. Symbolic links are not resolved and nothing
// is checked on disk: whether the path exists, and what it is, is for the command to find out.

#include <expected>
#include <filesystem>
#include <string_view>

#include "recoverytool/RecoveryToolError.hpp"

namespace galdrine::recoverytool {

namespace RecoveryToolPath {

// standardised makes `path` absolute against `currentDirectory` (which must be absolute),
// removes dot segments, and drops a trailing separator so that the last component names
// the package or the destination itself. The root stays "/".
[[nodiscard]] std::filesystem::path standardised(const std::filesystem::path& path,
                                                 const std::filesystem::path& currentDirectory);

// filePath standardises an argument against the process's current directory. It fails with
// invalidArguments only when a relative path meets a current directory that cannot be
// named; an absolute path never asks for it.
[[nodiscard]] std::expected<std::filesystem::path, RecoveryToolError> filePath(std::string_view argument);

}  // namespace RecoveryToolPath

}  // namespace galdrine::recoverytool
