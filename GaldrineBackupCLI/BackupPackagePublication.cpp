#include "GaldrineBackupCLI/BackupPackagePublication.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCore/GaldrineDirectorySynchronization.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"

namespace BackupPackagePublication {

namespace fs = std::filesystem;

std::expected<void, BackupToolError> checkNewPackageLocation(const fs::path& packageURL) {
  if (!GaldrineBackupFormatV1::isValidPackageRootName(packageURL.filename().native())) {
    return std::unexpected(BackupToolError::packageLocationUnavailable);
  }
  struct stat status{};
  if (::lstat(packageURL.c_str(), &status) == 0) return std::unexpected(BackupToolError::packageExists);
  if (::lstat(packageURL.parent_path().c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::unexpected(BackupToolError::packageLocationUnavailable);
  }
  return {};
}

std::expected<fs::path, BackupToolError> stagingURL(const fs::path& packageURL) {
  const auto identifier = GaldrinePlatformRandom::lowercaseUUIDText();
  if (!identifier) return std::unexpected(BackupToolError::operationFailed);
  // Hidden, and a package name itself, so that the package can be built in place.
  return packageURL.parent_path() / ("." + packageURL.filename().native() + ".staging-" + *identifier +
                                     std::string(GaldrineBackupFormatV1::dottedPackageExtension));
}

std::expected<void, BackupToolError> publish(const fs::path& stagingURL, const fs::path& packageURL) {
  if (auto moved = GaldrinePlatformFiles::moveRefusingExistingTarget(stagingURL, packageURL); !moved) {
    return std::unexpected(moved.error().errorNumber == EEXIST ? BackupToolError::packageExists
                                                               : BackupToolError::outputWriteFailed);
  }
  if (!GaldrineDirectorySynchronization::synchronizeAfterMutation(packageURL.parent_path())) {
    std::error_code ignored;  // best effort: the failure is reported either way
    fs::remove_all(packageURL, ignored);
    return std::unexpected(BackupToolError::outputWriteFailed);
  }
  return {};
}

}  // namespace BackupPackagePublication
