#include "format/payload/BackupPayloadStagingFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "format/package/DirectorySynchronization.hpp"
#include "platform/FilePath.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"

namespace galdrine::format {

namespace {

using StagingFile = BackupPayloadStagingFile;
using Error = BackupPayloadV1Error;
using Failure = BackupPayloadV1Failure;

template <typename LowerError>
[[nodiscard]] std::unexpected<Failure> failure(LowerError error) {
  return std::unexpected(Failure(error));
}

[[nodiscard]] std::expected<void, Failure> passed(const std::expected<void, platform::FileError>& result) {
  if (!result) return failure(result.error());
  return {};
}

[[nodiscard]] bool isDirectoryAndNoLink(const std::filesystem::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

[[nodiscard]] bool somethingStandsAt(int directory, const std::string& name) {
  struct stat status {};
  return ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

std::expected<StagingFile, Failure> StagingFile::create(const std::filesystem::path& destination) {
  const std::filesystem::path target = platform::FilePath::standardized(destination);
  const std::filesystem::path parent = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
  if (!isDirectoryAndNoLink(parent)) return failure(Error::invalidParentDirectory());
  auto directory = platform::FileDescriptor::openDirectory(parent);
  if (!directory) return failure(directory.error());

  const std::optional<std::string> uuid = platform::Random::lowercaseUUIDText();
  if (!uuid) return failure(platform::FileError{EIO});
  std::string finalName = target.filename().native();
  std::string stagingName = finalName + "." + *uuid + std::string(BackupPayloadV1::stagingNameSuffix);
  // O_EXCL: a name that exists is never taken over, and so never removed by us.
  auto file =
      platform::FileDescriptor::openAt(directory->get(), stagingName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
  if (!file) return failure(file.error());
  return StagingFile(std::move(*directory), std::move(*file), std::move(finalName), std::move(stagingName));
}

StagingFile::BackupPayloadStagingFile(platform::FileDescriptor directory, platform::FileDescriptor file,
                                      std::string finalName, std::string stagingName)
    : directory_(std::move(directory)),
      file_(std::move(file)),
      finalName_(std::move(finalName)),
      stagingName_(std::move(stagingName)),
      ownsStagingName_(true) {}

StagingFile::BackupPayloadStagingFile(StagingFile&& other) noexcept
    : directory_(std::move(other.directory_)),
      file_(std::move(other.file_)),
      finalName_(std::move(other.finalName_)),
      stagingName_(std::move(other.stagingName_)),
      ownsStagingName_(std::exchange(other.ownsStagingName_, false)) {}

StagingFile::~BackupPayloadStagingFile() {
  if (!ownsStagingName_) return;
  ::unlinkat(directory_.get(), stagingName_.c_str(), 0);  // best effort: the writer already failed
}

std::expected<void, Failure> StagingFile::append(ByteView bytes) {
  return passed(platform::Files::writeAll(file_.get(), bytes));
}

std::expected<void, Failure> StagingFile::overwriteStart(ByteView bytes) {
  if (::lseek(file_.get(), 0, SEEK_SET) != 0) return failure(platform::FileError::fromErrno());
  return append(bytes);
}

std::expected<void, Failure> StagingFile::makeDurable() {
  if (auto synchronized = passed(platform::Files::synchronizeFile(file_.get())); !synchronized) return synchronized;
  if (auto closed = passed(file_.close()); !closed) return closed;
  return synchronizeDirectory();
}

std::expected<void, Failure> StagingFile::publish() {
  if (somethingStandsAt(directory_.get(), finalName_)) return failure(Error::destinationAlreadyExists());
  const auto moved =
      platform::Files::moveRefusingExistingTarget(directory_.get(), stagingName_, directory_.get(), finalName_);
  if (!moved && moved.error().errorNumber == EEXIST) return failure(Error::destinationAlreadyExists());
  if (!moved) return failure(moved.error());
  ownsStagingName_ = false;  // published: the staging name is gone and the final file stays
  return synchronizeDirectory();
}

std::expected<void, Failure> StagingFile::synchronizeDirectory() const {
  // A volume that leaves durability to its provider counts as synchronised.
  if (!DirectorySynchronization::synchronizeAfterMutation(directory_.get())) {
    return failure(Error::invalidParentDirectory());
  }
  return {};
}

}  // namespace galdrine::format
