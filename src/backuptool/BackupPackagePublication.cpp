#include "backuptool/BackupPackagePublication.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "format/header/BackupFormatV1.hpp"
#include "format/package/DirectorySynchronization.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"

namespace galdrine::backuptool {

namespace BackupPackagePublication {

namespace fs = std::filesystem;

std::expected<void, BackupToolError> checkNewPackageLocation(const fs::path& packagePath) {
  if (!format::BackupFormatV1::isValidPackageRootName(packagePath.filename().native())) {
    return std::unexpected(BackupToolError::packageLocationUnavailable);
  }
  struct stat status {};
  if (::lstat(packagePath.c_str(), &status) == 0) return std::unexpected(BackupToolError::packageExists);
  if (::lstat(packagePath.parent_path().c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::unexpected(BackupToolError::packageLocationUnavailable);
  }
  return {};
}

std::expected<fs::path, BackupToolError> stagingPath(const fs::path& packagePath) {
  const auto identifier = platform::Random::lowercaseUUIDText();
  if (!identifier) return std::unexpected(BackupToolError::operationFailed);
  // Hidden, and a package name itself, so that the package can be built in place.
  return packagePath.parent_path() / ("." + packagePath.filename().native() + ".staging-" + *identifier +
                                      std::string(format::BackupFormatV1::dottedPackageExtension));
}

std::expected<void, BackupToolError> publish(const fs::path& stagingPath, const fs::path& packagePath) {
  if (auto moved = platform::Files::moveRefusingExistingTarget(stagingPath, packagePath); !moved) {
    return std::unexpected(moved.error().errorNumber == EEXIST ? BackupToolError::packageExists
                                                               : BackupToolError::outputWriteFailed);
  }
  if (!format::DirectorySynchronization::synchronizeAfterMutation(packagePath.parent_path())) {
    std::error_code ignored;  // best effort: the failure is reported either way
    fs::remove_all(packagePath, ignored);
    return std::unexpected(BackupToolError::outputWriteFailed);
  }
  return {};
}

}  // namespace BackupPackagePublication

}  // namespace galdrine::backuptool
