#include "support/BackupPackageDamage.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "format/package/BackupPackageV1.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"

namespace galdrine::testsupport {

namespace {

namespace fs = std::filesystem;
using FileError = platform::FileError;
using Damage = BackupFileDamage;

[[nodiscard]] std::expected<void, FileError> checked(int result) {
  if (result != 0) return std::unexpected(FileError::fromErrno());
  return {};
}

[[nodiscard]] std::expected<std::uint64_t, FileError> sizeOf(const fs::path& file) {
  struct stat status {};
  if (::lstat(file.c_str(), &status) != 0) return std::unexpected(FileError::fromErrno());
  if (!S_ISREG(status.st_mode)) return std::unexpected(FileError{EINVAL});
  return static_cast<std::uint64_t>(status.st_size);
}

[[nodiscard]] std::expected<void, FileError> truncateBy(const fs::path& file, std::uint64_t byteCount) {
  const auto size = sizeOf(file);
  if (!size) return std::unexpected(size.error());
  if (*size < byteCount) return std::unexpected(FileError{EINVAL});
  return checked(::truncate(file.c_str(), static_cast<off_t>(*size - byteCount)));
}

[[nodiscard]] std::expected<void, FileError> appendZero(const fs::path& file) {
  auto descriptor = platform::FileDescriptor::open(file, O_WRONLY | O_APPEND | O_NOFOLLOW);
  if (!descriptor) return std::unexpected(descriptor.error());
  const std::array<std::uint8_t, 1> zero{};
  if (auto done = platform::Files::writeAll(descriptor->get(), zero); !done) return done;
  return descriptor->close();
}

[[nodiscard]] std::expected<void, FileError> replaceByLink(const fs::path& packagePath, const fs::path& file) {
  const fs::path moved = packagePath / "tmp" / (file.filename().string() + ".moved");
  if (auto done = checked(::rename(file.c_str(), moved.c_str())); !done) return done;
  return checked(::symlink(moved.c_str(), file.c_str()));
}

[[nodiscard]] std::expected<fs::path, FileError> partFile(const writer::BackupWrittenCommit& commit,
                                                          ByteView resourceIdentifier, std::size_t partIndex) {
  const auto* resource = commit.resource(resourceIdentifier);
  if (resource == nullptr || partIndex >= resource->partFiles.size()) return std::unexpected(FileError{ENOENT});
  return resource->partFiles[partIndex];
}

}  // namespace

namespace BackupPackageDamage {

std::expected<void, FileError> damageFile(const fs::path& packagePath, const fs::path& file, Damage damage) {
  const auto size = sizeOf(file);
  if (!size) return std::unexpected(size.error());
  switch (damage) {
    case Damage::remove:
      return checked(::unlink(file.c_str()));
    case Damage::truncate:
      return truncateBy(file, 1);
    case Damage::extend:
      return appendZero(file);
    case Damage::alterByte:
      return alterByte(file, *size / 2);
    case Damage::replaceBySymbolicLink:
      return replaceByLink(packagePath, file);
    case Damage::replaceByDirectory:
      if (auto done = checked(::unlink(file.c_str())); !done) return done;
      return checked(::mkdir(file.c_str(), 0755));
    case Damage::replaceByEmptyFile:
      return checked(::truncate(file.c_str(), 0));
  }
  std::unreachable();
}

std::expected<void, FileError> alterByte(const fs::path& file, std::uint64_t offset) {
  auto descriptor = platform::FileDescriptor::open(file, O_RDWR | O_NOFOLLOW);
  if (!descriptor) return std::unexpected(descriptor.error());
  std::uint8_t byte = 0;
  if (::pread(descriptor->get(), &byte, 1, static_cast<off_t>(offset)) != 1) return std::unexpected(FileError{EINVAL});
  byte = static_cast<std::uint8_t>(~byte);
  if (::pwrite(descriptor->get(), &byte, 1, static_cast<off_t>(offset)) != 1) return std::unexpected(FileError::fromErrno());
  return descriptor->close();
}

std::expected<fs::path, FileError> damagePayload(const writer::BackupWrittenCommit& commit, ByteView resourceIdentifier,
                                                 Damage damage, std::size_t partIndex) {
  auto file = partFile(commit, resourceIdentifier, partIndex);
  if (!file) return std::unexpected(file.error());
  if (auto done = damageFile(packagePathOf(commit), *file, damage); !done) return std::unexpected(done.error());
  return file;
}

std::expected<fs::path, FileError> metadataFile(const writer::BackupWrittenCommit& commit,
                                                BackupMetadataFile which, std::size_t sectionIndex) {
  using Which = BackupMetadataFile;
  switch (which) {
    case Which::commit:
      return commit.commitFile;
    case Which::head:
      if (!commit.head) return std::unexpected(FileError{ENOENT});
      return commit.head->file;
    case Which::snapshot:
      return commit.snapshotFile;
    case Which::manifestRoot:
      return commit.manifestRootFile;
    case Which::manifestSection:
      if (sectionIndex >= commit.sectionFiles.size()) return std::unexpected(FileError{ENOENT});
      return commit.sectionFiles[sectionIndex];
    case Which::keyEnvelopes:
      return packagePathOf(commit) / format::BackupPackageV1::keyEnvelopesName;
  }
  std::unreachable();
}

std::expected<fs::path, FileError> alterMetadataByte(const writer::BackupWrittenCommit& commit,
                                                     BackupMetadataFile which, std::size_t sectionIndex) {
  auto file = metadataFile(commit, which, sectionIndex);
  if (!file) return std::unexpected(file.error());
  if (auto done = damageFile(packagePathOf(commit), *file, Damage::alterByte); !done) return std::unexpected(done.error());
  return file;
}

std::expected<fs::path, FileError> addStrayFile(const fs::path& directory, std::string_view name, ByteView bytes) {
  const fs::path file = directory / name;
  auto descriptor = platform::FileDescriptor::open(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!descriptor) return std::unexpected(descriptor.error());
  if (auto done = platform::Files::writeAll(descriptor->get(), bytes); !done) return std::unexpected(done.error());
  if (auto done = descriptor->close(); !done) return std::unexpected(done.error());
  return file;
}

fs::path packagePathOf(const writer::BackupWrittenCommit& commit) { return commit.commitFile.parent_path().parent_path(); }

}  // namespace BackupPackageDamage

}  // namespace galdrine::testsupport
