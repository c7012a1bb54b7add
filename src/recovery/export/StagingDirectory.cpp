#include "recovery/export/StagingDirectory.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "format/package/DirectorySynchronization.hpp"
#include "format/package/PathConfinement.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryExporterError;

constexpr mode_t privateDirectoryMode = 0700;

[[nodiscard]] std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

[[nodiscard]] std::expected<void, Error> requireConfinedParent(const fs::path& destinationPath) {
  if (!format::PathConfinement::requireExistingDirectoryWithoutUntrustedSymbolicLinks(destinationPath.parent_path())) {
    return failure(Error::destinationUnavailable);
  }
  return {};
}

// requireNothingAt: an lstat that finds anything, a dangling link included, is
// destinationExists; one that fails otherwise than with ENOENT is destinationUnavailable.
[[nodiscard]] std::expected<void, Error> requireNothingAt(const fs::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) == 0) return failure(Error::destinationExists);
  if (errno != ENOENT) return failure(Error::destinationUnavailable);
  return {};
}

// restrictToOwner sets 0700 on the directory just made, whatever the process's umask left of
// it: the export will hold decrypted media.
[[nodiscard]] bool restrictToOwner(const fs::path& path) {
  const auto directory = platform::FileDescriptor::openDirectory(path);
  return directory && ::fchmod(directory->get(), privateDirectoryMode) == 0;
}

[[nodiscard]] bool isSynchronized(const fs::path& directory) {
  return format::DirectorySynchronization::synchronizeAfterMutation(directory).has_value();
}

}  // namespace

std::expected<void, Error> createPrivateDirectory(const fs::path& path) {
  if (::mkdir(path.c_str(), privateDirectoryMode) != 0) {
    return failure(errno == EEXIST ? Error::destinationExists : Error::destinationUnavailable);
  }
  if (!restrictToOwner(path)) {
    std::error_code ignored;
    fs::remove(path, ignored);  // made by this call a moment ago and still empty
    return failure(Error::destinationUnavailable);
  }
  return {};
}

std::expected<void, Error> requireDirectory(const fs::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return failure(Error::destinationUnavailable);
  return {};
}

std::expected<StagingDirectory, Error> StagingDirectory::make(const fs::path& destinationPath) {
  if (auto confined = requireConfinedParent(destinationPath); !confined) return std::unexpected(confined.error());
  if (auto absent = requireNothingAt(destinationPath); !absent) return std::unexpected(absent.error());
  for (int attempt = 0; attempt < maximumNameAttempts; ++attempt) {
    const auto uuid = platform::Random::lowercaseUUIDText();
    if (!uuid) return failure(Error::destinationUnavailable);
    fs::path path = destinationPath.parent_path() / (".galdrine-recovery-" + *uuid + ".tmp");
    const auto created = createPrivateDirectory(path);
    if (created) return StagingDirectory(std::move(path));
    if (created.error() != Error::destinationExists) return std::unexpected(created.error());
  }
  return failure(Error::destinationUnavailable);
}

StagingDirectory::StagingDirectory(StagingDirectory&& other) noexcept
    : path_(std::move(other.path_)), removeOnRelease_(std::exchange(other.removeOnRelease_, false)) {}

StagingDirectory::~StagingDirectory() {
  if (!removeOnRelease_) return;
  std::error_code ignored;  // a directory that cannot be removed stays behind, hidden and private
  fs::remove_all(path_, ignored);
}

std::expected<void, Error> StagingDirectory::publish(const fs::path& destinationPath) {
  if (auto confined = requireConfinedParent(destinationPath); !confined) return std::unexpected(confined.error());
  if (auto directory = requireDirectory(path_); !directory) return std::unexpected(directory.error());
  if (auto absent = requireNothingAt(destinationPath); !absent) return std::unexpected(absent.error());
  if (auto moved = platform::Files::moveRefusingExistingTarget(path_, destinationPath); !moved) {
    return failure(moved.error().errorNumber == EEXIST ? Error::destinationExists : Error::outputWriteFailed);
  }
  removeOnRelease_ = false;  // published: the staging name is gone, and what stands there now is not ours
  if (!isSynchronized(destinationPath.parent_path())) return failure(Error::outputWriteFailed);
  return {};
}

}  // namespace galdrine::recovery
