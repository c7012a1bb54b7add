#include "GaldrineRecoveryCore/ExportStaging.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "GaldrineCore/GaldrineDirectorySynchronization.hpp"
#include "GaldrineCore/GaldrinePathConfinement.hpp"
#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"

namespace GaldrineRecoveryExporterV1 {

namespace {

namespace fs = std::filesystem;
using Error = GaldrineRecoveryExporterV1Error;

constexpr mode_t privateDirectoryMode = 0700;

[[nodiscard]] std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

[[nodiscard]] std::expected<void, Error> requireConfinedParent(const fs::path& destinationURL) {
  if (!GaldrinePathConfinement::requireExistingDirectoryWithoutUntrustedSymbolicLinks(destinationURL.parent_path())) {
    return failure(Error::destinationUnavailable);
  }
  return {};
}

// requireNothingAt: an lstat that finds anything, a dangling link included, is
// destinationExists; one that fails otherwise than with ENOENT is destinationUnavailable.
[[nodiscard]] std::expected<void, Error> requireNothingAt(const fs::path& url) {
  struct stat status {};
  if (::lstat(url.c_str(), &status) == 0) return failure(Error::destinationExists);
  if (errno != ENOENT) return failure(Error::destinationUnavailable);
  return {};
}

// restrictToOwner sets 0700 on the directory just made, whatever the process's umask left of
// it: the export will hold decrypted media.
[[nodiscard]] bool restrictToOwner(const fs::path& url) {
  const auto directory = GaldrineFileDescriptor::openDirectory(url);
  return directory && ::fchmod(directory->get(), privateDirectoryMode) == 0;
}

[[nodiscard]] bool isSynchronized(const fs::path& directory) {
  return GaldrineDirectorySynchronization::synchronizeAfterMutation(directory).has_value();
}

}  // namespace

std::expected<void, Error> createPrivateDirectory(const fs::path& url) {
  if (::mkdir(url.c_str(), privateDirectoryMode) != 0) {
    return failure(errno == EEXIST ? Error::destinationExists : Error::destinationUnavailable);
  }
  if (!restrictToOwner(url)) {
    std::error_code ignored;
    fs::remove(url, ignored);  // made by this call a moment ago and still empty
    return failure(Error::destinationUnavailable);
  }
  return {};
}

std::expected<void, Error> requireDirectory(const fs::path& url) {
  struct stat status {};
  if (::lstat(url.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return failure(Error::destinationUnavailable);
  return {};
}

std::expected<StagingDirectory, Error> StagingDirectory::make(const fs::path& destinationURL) {
  if (auto confined = requireConfinedParent(destinationURL); !confined) return std::unexpected(confined.error());
  if (auto absent = requireNothingAt(destinationURL); !absent) return std::unexpected(absent.error());
  for (int attempt = 0; attempt < maximumNameAttempts; ++attempt) {
    const auto uuid = GaldrinePlatformRandom::lowercaseUUIDText();
    if (!uuid) return failure(Error::destinationUnavailable);
    fs::path url = destinationURL.parent_path() / (".galdrine-recovery-" + *uuid + ".tmp");
    const auto created = createPrivateDirectory(url);
    if (created) return StagingDirectory(std::move(url));
    if (created.error() != Error::destinationExists) return std::unexpected(created.error());
  }
  return failure(Error::destinationUnavailable);
}

StagingDirectory::StagingDirectory(StagingDirectory&& other) noexcept
    : url_(std::move(other.url_)), removeOnRelease_(std::exchange(other.removeOnRelease_, false)) {}

StagingDirectory::~StagingDirectory() {
  if (!removeOnRelease_) return;
  std::error_code ignored;  // a directory that cannot be removed stays behind, hidden and private
  fs::remove_all(url_, ignored);
}

std::expected<void, Error> StagingDirectory::publish(const fs::path& destinationURL) {
  if (auto confined = requireConfinedParent(destinationURL); !confined) return std::unexpected(confined.error());
  if (auto directory = requireDirectory(url_); !directory) return std::unexpected(directory.error());
  if (auto absent = requireNothingAt(destinationURL); !absent) return std::unexpected(absent.error());
  if (auto moved = GaldrinePlatformFiles::moveRefusingExistingTarget(url_, destinationURL); !moved) {
    return failure(moved.error().errorNumber == EEXIST ? Error::destinationExists : Error::outputWriteFailed);
  }
  removeOnRelease_ = false;  // published: the staging name is gone, and what stands there now is not ours
  if (!isSynchronized(destinationURL.parent_path())) return failure(Error::outputWriteFailed);
  return {};
}

}  // namespace GaldrineRecoveryExporterV1
