#include "writer/BackupArtifactFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "format/package/DirectorySynchronization.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"

namespace galdrine::writer {

namespace {

namespace fs = std::filesystem;
using Failure = BackupWriterFailure;

[[nodiscard]] std::unexpected<Failure> fileFailure(std::int32_t errorNumber) {
  return backupWriterFailure(platform::FileError{errorNumber});
}

[[nodiscard]] std::expected<void, Failure> synchronizeDirectory(int directory) {
  const auto outcome = format::DirectorySynchronization::synchronizeAfterMutation(directory);
  if (!outcome) return fileFailure(outcome.error().errorNumber != 0 ? outcome.error().errorNumber : EIO);
  return {};
}

// StagedFile is one file staged in tmp; it removes itself unless it was moved away.
class StagedFile {
 public:
  StagedFile(int directory, std::string name) : directory_(directory), name_(std::move(name)) {}
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile() {
    if (owned_) ::unlinkat(directory_, name_.c_str(), 0);  // best effort: the write already failed
  }
  [[nodiscard]] const std::string& name() const { return name_; }
  void released() { owned_ = false; }

 private:
  int directory_;
  std::string name_;
  bool owned_ = true;
};

[[nodiscard]] std::expected<void, Failure> writeDurably(int directory, const std::string& name, ByteView bytes) {
  auto file = platform::FileDescriptor::openAt(directory, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!file) return backupWriterFailure(file.error());
  if (auto done = platform::Files::writeAll(file->get(), bytes); !done) return backupWriterFailure(done.error());
  if (auto done = platform::Files::synchronizeFile(file->get()); !done) return backupWriterFailure(done.error());
  if (auto done = file->close(); !done) return backupWriterFailure(done.error());
  return {};
}

[[nodiscard]] std::expected<void, Failure> requireReadBack(int directory, const std::string& name, ByteView bytes) {
  auto file = platform::FileDescriptor::openAt(directory, name, O_RDONLY | O_NOFOLLOW);
  if (!file) return backupWriterFailure(file.error());
  auto read = platform::Files::readUpTo(file->get(), bytes.size() + 1);
  if (!read) return backupWriterFailure(read.error());
  if (!ByteOrder::equal(*read, bytes)) return fileFailure(EIO);
  return {};
}

struct Directories {
  platform::FileDescriptor staging;
  platform::FileDescriptor target;
};

[[nodiscard]] std::expected<Directories, Failure> openDirectories(const format::BackupPackageV1& package,
                                                                  const fs::path& target) {
  const auto tmp = package.directoryPath("tmp");
  if (!tmp) return backupWriterFailure(format::BackupPackageV1Failure(tmp.error()));
  auto staging = platform::FileDescriptor::openDirectory(*tmp);
  if (!staging) return backupWriterFailure(staging.error());
  auto targetDirectory = platform::FileDescriptor::openDirectory(target);
  if (!targetDirectory) return backupWriterFailure(targetDirectory.error());
  return Directories{std::move(*staging), std::move(*targetDirectory)};
}

}  // namespace

namespace BackupArtifactFile {

std::expected<fs::path, Failure> writeOnce(const format::BackupPackageV1& package, std::string_view directoryName,
                                           const std::string& fileName, ByteView bytes) {
  const auto directory = package.directoryPath(directoryName);
  if (!directory) return backupWriterFailure(format::BackupPackageV1Failure(directory.error()));
  const auto directories = openDirectories(package, *directory);
  if (!directories) return std::unexpected(directories.error());
  const int staging = directories->staging.get();
  const auto uuid = platform::Random::lowercaseUUIDText();
  if (!uuid) return fileFailure(EIO);
  StagedFile staged(staging, fileName + "." + *uuid + ".partial");
  if (auto done = writeDurably(staging, staged.name(), bytes); !done) return std::unexpected(done.error());
  if (auto done = requireReadBack(staging, staged.name(), bytes); !done) return std::unexpected(done.error());
  auto moved = platform::Files::moveRefusingExistingTarget(staging, staged.name(), directories->target.get(), fileName);
  if (!moved) return backupWriterFailure(moved.error());
  staged.released();
  if (auto done = synchronizeDirectory(directories->target.get()); !done) return std::unexpected(done.error());
  if (auto done = synchronizeDirectory(staging); !done) return std::unexpected(done.error());
  return *directory / fileName;
}

}  // namespace BackupArtifactFile

}  // namespace galdrine::writer
