#pragma once
// StagingDirectory is everything an export does to directories: a hidden staging directory
// made beside the destination, so that the final rename stays inside one file system; private
// directories in it; and the one rename that publishes the finished tree. A destination
// either does not exist or holds a complete export.
//
// A StagingDirectory removes itself and everything in it when it goes away, unless it was
// published. After a crash the only residue is a hidden directory ".galdrine-recovery-<uuid>.tmp"
// under 0700 permissions, which no later run reads or removes.

#include <expected>
#include <filesystem>

#include "recovery/export/RecoveryExporterError.hpp"

namespace galdrine::recovery {

// createPrivateDirectory creates exactly `path`, without intermediate directories, with the
// permissions 0700. Anything standing there is destinationExists; any other failure is
// destinationUnavailable.
[[nodiscard]] std::expected<void, RecoveryExporterError> createPrivateDirectory(const std::filesystem::path& path);

// requireDirectory: an lstat of `path` must show a directory, not a link to one
// (destinationUnavailable).
[[nodiscard]] std::expected<void, RecoveryExporterError> requireDirectory(const std::filesystem::path& path);

class StagingDirectory {
 public:
  // maximumNameAttempts bounds the fresh names tried before the parent counts as unusable.
  static constexpr int maximumNameAttempts = 32;

  // make prepares the export to `destinationPath`, in this order: its parent must be reached
  // through real directories only (PathConfinement; destinationUnavailable); nothing
  // may stand at the destination, not even a dangling link (destinationExists; an lstat failing
  // otherwise than with ENOENT is destinationUnavailable); then up to 32 names
  // ".galdrine-recovery-<lower-case uuid>.tmp" are tried in the parent with
  // createPrivateDirectory, a name already taken moving on to the next and any other failure
  // ending the call. All 32 taken, or no fresh uuid, is destinationUnavailable.
  [[nodiscard]] static std::expected<StagingDirectory, RecoveryExporterError> make(
      const std::filesystem::path& destinationPath);

  ~StagingDirectory();
  StagingDirectory(StagingDirectory&& other) noexcept;
  StagingDirectory& operator=(StagingDirectory&&) = delete;
  StagingDirectory(const StagingDirectory&) = delete;
  StagingDirectory& operator=(const StagingDirectory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  // publish moves the staging directory to `destinationPath`, in this order: the parent's
  // confinement once more, since recovering may have taken long (destinationUnavailable); the
  // staging directory still a directory (destinationUnavailable); nothing at the destination
  // (destinationExists, or destinationUnavailable for another lstat failure); a rename that
  // refuses an existing target (destinationExists for one that came meanwhile, any other
  // failure outputWriteFailed). Once renamed the directory is published and never removed; a
  // failed synchronisation of the parent after that is outputWriteFailed, with the destination
  // complete.
  [[nodiscard]] std::expected<void, RecoveryExporterError> publish(const std::filesystem::path& destinationPath);

 private:
  explicit StagingDirectory(std::filesystem::path path) : path_(std::move(path)) {}

  std::filesystem::path path_;
  bool removeOnRelease_ = true;
};

}  // namespace galdrine::recovery
