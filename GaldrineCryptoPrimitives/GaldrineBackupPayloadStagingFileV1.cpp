#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadStagingFileV1.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "GaldrineCore/GaldrineDirectorySynchronization.hpp"
#include "GaldrinePlatform/GaldrineFileURL.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"

namespace {

using StagingFile = GaldrineBackupPayloadStagingFileV1;
using Error = GaldrineBackupPayloadV1Error;
using Failure = GaldrineBackupPayloadV1Failure;

template <typename LowerError>
[[nodiscard]] std::unexpected<Failure> failure(LowerError error) {
  return std::unexpected(Failure(error));
}

[[nodiscard]] std::expected<void, Failure> passed(const std::expected<void, GaldrinePlatformFileError>& result) {
  if (!result) return failure(result.error());
  return {};
}

[[nodiscard]] bool isDirectoryAndNoLink(const std::filesystem::path& url) {
  struct stat status {};
  return ::lstat(url.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

[[nodiscard]] bool somethingStandsAt(int directory, const std::string& name) {
  struct stat status {};
  return ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

std::expected<StagingFile, Failure> StagingFile::create(const std::filesystem::path& destination) {
  const std::filesystem::path target = GaldrineFileURL::standardized(destination);
  const std::filesystem::path parent = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
  if (!isDirectoryAndNoLink(parent)) return failure(Error::invalidParentDirectory());
  auto directory = GaldrineFileDescriptor::openDirectory(parent);
  if (!directory) return failure(directory.error());

  const std::optional<std::string> uuid = GaldrinePlatformRandom::lowercaseUUIDText();
  if (!uuid) return failure(GaldrinePlatformFileError{EIO});
  std::string finalName = target.filename().native();
  std::string stagingName = finalName + "." + *uuid + std::string(GaldrineBackupPayloadV1::stagingNameSuffix);
  // O_EXCL: a name that exists is never taken over, and so never removed by us.
  auto file =
      GaldrineFileDescriptor::openAt(directory->get(), stagingName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
  if (!file) return failure(file.error());
  return StagingFile(std::move(*directory), std::move(*file), std::move(finalName), std::move(stagingName));
}

StagingFile::GaldrineBackupPayloadStagingFileV1(GaldrineFileDescriptor directory, GaldrineFileDescriptor file,
                                                std::string finalName, std::string stagingName)
    : directory_(std::move(directory)),
      file_(std::move(file)),
      finalName_(std::move(finalName)),
      stagingName_(std::move(stagingName)),
      ownsStagingName_(true) {}

StagingFile::GaldrineBackupPayloadStagingFileV1(StagingFile&& other) noexcept
    : directory_(std::move(other.directory_)),
      file_(std::move(other.file_)),
      finalName_(std::move(other.finalName_)),
      stagingName_(std::move(other.stagingName_)),
      ownsStagingName_(std::exchange(other.ownsStagingName_, false)) {}

StagingFile::~GaldrineBackupPayloadStagingFileV1() {
  if (!ownsStagingName_) return;
  ::unlinkat(directory_.get(), stagingName_.c_str(), 0);  // best effort: the writer already failed
}

std::expected<void, Failure> StagingFile::append(ByteView bytes) {
  return passed(GaldrinePlatformFiles::writeAll(file_.get(), bytes));
}

std::expected<void, Failure> StagingFile::overwriteStart(ByteView bytes) {
  if (::lseek(file_.get(), 0, SEEK_SET) != 0) return failure(GaldrinePlatformFileError::fromErrno());
  return append(bytes);
}

std::expected<void, Failure> StagingFile::makeDurable() {
  if (auto synchronized = passed(GaldrinePlatformFiles::synchronizeFile(file_.get())); !synchronized)
    return synchronized;
  if (auto closed = passed(file_.close()); !closed) return closed;
  return synchronizeDirectory();
}

std::expected<void, Failure> StagingFile::publish() {
  if (somethingStandsAt(directory_.get(), finalName_)) return failure(Error::destinationAlreadyExists());
  const auto moved =
      GaldrinePlatformFiles::moveRefusingExistingTarget(directory_.get(), stagingName_, directory_.get(), finalName_);
  if (!moved && moved.error().errorNumber == EEXIST) return failure(Error::destinationAlreadyExists());
  if (!moved) return failure(moved.error());
  ownsStagingName_ = false;  // published: the staging name is gone and the final file stays
  return synchronizeDirectory();
}

std::expected<void, Failure> StagingFile::synchronizeDirectory() const {
  // A volume that leaves durability to its provider counts as synchronised.
  if (!GaldrineDirectorySynchronization::synchronizeAfterMutation(directory_.get())) {
    return failure(Error::invalidParentDirectory());
  }
  return {};
}
