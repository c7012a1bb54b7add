#include "support/BackupPackageDamage.hpp"

#include <fcntl.h>

#include <cerrno>

#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"
#include "support/FileFixtures.hpp"

namespace galdrine::testsupport {

namespace BackupPackageDamage {

namespace fs = std::filesystem;
using FileError = platform::FileError;

std::expected<void, FileError> damageFile(const fs::path& packagePath, const fs::path& file, BackupFileDamage damage) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(file, error)))
    return std::unexpected(FileError{error ? error.value() : EINVAL});
  const std::uintmax_t size = fs::file_size(file, error);
  const fs::path moved = packagePath / "tmp" / (file.filename().string() + ".moved");
  Bytes bytes;
  switch (damage) {
    case BackupFileDamage::remove:
      fs::remove(file, error);
      break;
    case BackupFileDamage::truncate:
      if (size == 0) return std::unexpected(FileError{EINVAL});
      fs::resize_file(file, size - 1, error);
      break;
    case BackupFileDamage::extend:
      fs::resize_file(file, size + 1, error);
      break;  // the new byte reads as zero
    case BackupFileDamage::alterByte:
      bytes = FileFixtures::readFile(file);
      if (bytes.empty()) return std::unexpected(FileError{EINVAL});
      bytes[bytes.size() / 2] ^= 0xFF;
      FileFixtures::writeFile(file, bytes);
      break;
    case BackupFileDamage::replaceBySymbolicLink:
      fs::rename(file, moved, error);
      if (!error) fs::create_symlink(moved, file, error);
      break;
    case BackupFileDamage::replaceByDirectory:
      if (fs::remove(file, error)) fs::create_directory(file, error);
      break;
    case BackupFileDamage::replaceByEmptyFile:
      fs::resize_file(file, 0, error);
      break;
  }
  if (error) return std::unexpected(FileError{error.value()});
  return {};
}

std::expected<fs::path, FileError> damagePayload(const writer::BackupWrittenCommit& commit, ByteView resourceIdentifier,
                                                 BackupFileDamage damage, std::size_t partIndex) {
  const auto* resource = commit.resource(resourceIdentifier);
  if (resource == nullptr || partIndex >= resource->partFiles.size()) return std::unexpected(FileError{ENOENT});
  const fs::path& file = resource->partFiles[partIndex];
  const fs::path packagePath = commit.commitFile.parent_path().parent_path();
  if (auto done = damageFile(packagePath, file, damage); !done) return std::unexpected(done.error());
  return file;
}

std::expected<fs::path, FileError> metadataFile(const writer::BackupWrittenCommit& commit, BackupMetadataFile which,
                                                std::size_t sectionIndex) {
  switch (which) {
    case BackupMetadataFile::commit:
      return commit.commitFile;
    case BackupMetadataFile::head:
      if (!commit.head) return std::unexpected(FileError{ENOENT});
      return commit.head->file;
    case BackupMetadataFile::snapshot:
      return commit.snapshotFile;
    case BackupMetadataFile::manifestRoot:
      return commit.manifestRootFile;
    case BackupMetadataFile::manifestSection:
      if (sectionIndex >= commit.sectionFiles.size()) return std::unexpected(FileError{ENOENT});
      return commit.sectionFiles[sectionIndex];
  }
  std::unreachable();
}

std::expected<fs::path, FileError> addStrayFile(const fs::path& directory, std::string_view name, ByteView bytes) {
  const fs::path file = directory / name;
  auto descriptor = platform::FileDescriptor::open(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!descriptor) return std::unexpected(descriptor.error());
  if (auto done = platform::Files::writeAll(descriptor->get(), bytes); !done) return std::unexpected(done.error());
  if (auto done = descriptor->close(); !done) return std::unexpected(done.error());
  return file;
}

}  // namespace BackupPackageDamage

}  // namespace galdrine::testsupport
