#include "format/package/BackupPackageV1.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <system_error>

#include "format/header/BackupFormatV1.hpp"
#include "format/package/BoundedDirectoryListing.hpp"
#include "format/package/DirectorySynchronization.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/FilePath.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"
#include "platform/ScopeGuard.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using Package = BackupPackageV1;
using Error = BackupPackageV1Error;
using Failure = BackupPackageV1Failure;

template <typename LowerError>
[[nodiscard]] std::unexpected<Failure> failure(LowerError error) {
  return std::unexpected(Failure(std::move(error)));
}

[[nodiscard]] std::unexpected<Failure> lastFileError() { return failure(platform::FileError::fromErrno()); }

[[nodiscard]] bool hasPackageExtension(const fs::path& path) {
  return path.extension().native() == BackupFormatV1::dottedPackageExtension && !path.stem().empty();
}

[[nodiscard]] bool isDirectoryAndNoLink(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// somethingStandsAt is true for any entry at all, a dangling symbolic link included.
[[nodiscard]] bool somethingStandsAt(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

// requireRegularFile gives the entry's status if it is a regular file and no symbolic link.
[[nodiscard]] std::expected<struct stat, Failure> requireRegularFile(const fs::path& path, std::string_view name) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return lastFileError();
  if (!S_ISREG(status.st_mode)) return failure(Error::invalidRootEntry(name));
  return status;
}

[[nodiscard]] bool isRootEntryName(std::string_view name) {
  return name == Package::formatHeaderName || name == Package::keyEnvelopesName ||
         name == Package::convenienceHeadName ||
         std::ranges::find(Package::requiredDirectoryNames, name) != Package::requiredDirectoryNames.end();
}

[[nodiscard]] bool contains(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

// isAcceptableRootEntrySet: only names of the closed list, and every required one among them.
[[nodiscard]] bool isAcceptableRootEntrySet(const std::vector<std::string>& names) {
  return std::ranges::all_of(names, isRootEntryName) && contains(names, Package::formatHeaderName) &&
         std::ranges::all_of(Package::requiredDirectoryNames,
                             [&](std::string_view name) { return contains(names, name); });
}

[[nodiscard]] std::expected<void, Failure> requireRootEntryKinds(const fs::path& root,
                                                                 const std::vector<std::string>& names) {
  for (const std::string_view name : Package::requiredDirectoryNames) {
    if (!isDirectoryAndNoLink(root / name)) return failure(Error::invalidRootEntry(name));
  }
  for (const std::string_view name : {Package::keyEnvelopesName, Package::convenienceHeadName}) {
    if (!contains(names, name)) continue;
    const auto status = requireRegularFile(root / name, name);
    if (!status) return std::unexpected(status.error());
  }
  return {};
}

// readHeader bounds the header twice: by its size before it is opened, and by one read of at
// most one byte past the ceiling, so a file that grows in between is caught and no more than
// 4097 bytes are ever held.
[[nodiscard]] std::expected<Bytes, Failure> readHeader(const fs::path& root) {
  const fs::path path = root / Package::formatHeaderName;
  const auto status = requireRegularFile(path, Package::formatHeaderName);
  if (!status) return std::unexpected(status.error());
  if (status->st_size < 0 || status->st_size > Package::maximumHeaderByteCount) return failure(Error::headerTooLarge());
  // O_NONBLOCK: a FIFO swapped in after the check must not stall the open.
  auto file = platform::FileDescriptor::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!file) return failure(file.error());
  struct stat opened {};
  if (::fstat(file->get(), &opened) != 0) return lastFileError();
  if (!S_ISREG(opened.st_mode)) return failure(Error::invalidRootEntry(Package::formatHeaderName));
  auto bytes = platform::Files::readUpTo(file->get(), Package::maximumHeaderByteCount + 1);
  if (!bytes) return failure(bytes.error());
  if (std::ssize(*bytes) > Package::maximumHeaderByteCount) return failure(Error::headerTooLarge());
  return bytes;
}

[[nodiscard]] std::expected<void, Failure> synchronizeDirectory(const fs::path& directory) {
  // A provider that takes durability over counts as success.
  if (!DirectorySynchronization::synchronizeAfterMutation(directory)) return failure(Error::invalidPackageRoot());
  return {};
}

[[nodiscard]] std::expected<void, Failure> makeDirectory(const fs::path& directory) {
  if (::mkdir(directory.c_str(), 0777) != 0) return lastFileError();  // the mode is narrowed by the umask
  return {};
}

[[nodiscard]] std::expected<void, Failure> writeNewFileDurably(const fs::path& path, ByteView bytes) {
  auto file = platform::FileDescriptor::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
  if (!file) return failure(file.error());
  if (auto written = platform::Files::writeAll(file->get(), bytes); !written) return failure(written.error());
  if (auto synchronized = platform::Files::synchronizeFile(file->get()); !synchronized) {
    return failure(synchronized.error());
  }
  if (auto closed = file->close(); !closed) return failure(closed.error());
  return {};
}

// populateStaging makes the nine directories and the header under the staging directory, each
// durable, and then the staging directory's own entries.
[[nodiscard]] std::expected<void, Failure> populateStaging(const fs::path& staging, ByteView headerData) {
  for (const std::string_view name : Package::requiredDirectoryNames) {
    if (auto made = makeDirectory(staging / name); !made) return made;
    if (auto synchronized = synchronizeDirectory(staging / name); !synchronized) return synchronized;
  }
  if (auto written = writeNewFileDurably(staging / Package::formatHeaderName, headerData); !written) return written;
  return synchronizeDirectory(staging);
}

[[nodiscard]] std::expected<fs::path, Failure> stagingPath(const fs::path& target) {
  const std::optional<std::string> identifier = platform::Random::lowercaseUUIDText();
  if (!identifier) return failure(platform::FileError{EIO});
  return target.parent_path() / ("." + target.filename().native() + ".create-" + *identifier);
}

}  // namespace

std::expected<BackupPackageV1, Failure> BackupPackageV1::open(const fs::path& packagePath) {
  const fs::path root = platform::FilePath::standardized(packagePath);
  if (!hasPackageExtension(root)) return failure(Error::invalidPackageExtension());
  if (!isDirectoryAndNoLink(root)) return failure(Error::invalidPackageRoot());
  const auto names = BoundedDirectoryListing::names(root, maximumRootEntryCount);
  if (!names || !isAcceptableRootEntrySet(*names)) return failure(Error::invalidRootEntrySet());
  if (auto kinds = requireRootEntryKinds(root, *names); !kinds) return std::unexpected(kinds.error());

  auto headerData = readHeader(root);
  if (!headerData) return std::unexpected(headerData.error());
  auto header = BackupFormatHeaderV1::decode(*headerData);
  if (!header) return std::unexpected(std::visit([](const auto& lower) { return Failure(lower); }, header.error()));
  const auto reencoded = header->encoded();
  if (!reencoded) return failure(reencoded.error());
  if (*reencoded != *headerData) return failure(Error::nonCanonicalHeader());
  return BackupPackageV1(root, std::move(*header), std::move(*headerData));
}

std::expected<BackupPackageV1, Failure> BackupPackageV1::create(const fs::path& packagePath,
                                                                ByteView packageIdentifier) {
  const fs::path target = platform::FilePath::standardized(packagePath);
  if (!hasPackageExtension(target)) return failure(Error::invalidPackageExtension());
  if (somethingStandsAt(target)) return failure(Error::destinationAlreadyExists());
  if (!isDirectoryAndNoLink(target.parent_path())) return failure(Error::invalidParentDirectory());
  const auto header = BackupFormatHeaderV1::make(packageIdentifier);
  if (!header) return failure(header.error());
  const auto headerData = header->encoded();
  if (!headerData) return failure(headerData.error());

  const auto staging = stagingPath(target);
  if (!staging) return std::unexpected(staging.error());
  if (somethingStandsAt(*staging)) return failure(Error::destinationAlreadyExists());
  if (auto made = makeDirectory(*staging); !made) return std::unexpected(made.error());  // not ours: never removed
  ScopeGuard removeStaging{[&] {
    std::error_code ignored;
    fs::remove_all(*staging, ignored);
  }};
  if (auto populated = populateStaging(*staging, *headerData); !populated) return std::unexpected(populated.error());
  if (somethingStandsAt(target)) return failure(Error::destinationAlreadyExists());
  if (auto moved = platform::Files::moveRefusingExistingTarget(*staging, target); !moved) {
    return failure(moved.error());
  }
  removeStaging.dismiss();  // published: the staging name is gone

  if (auto synchronized = synchronizeDirectory(target.parent_path()); !synchronized) {
    return std::unexpected(synchronized.error());
  }
  return open(target);
}

std::expected<fs::path, Error> BackupPackageV1::directoryPath(std::string_view name) const {
  if (std::ranges::find(requiredDirectoryNames, name) == requiredDirectoryNames.end()) {
    return std::unexpected(Error::invalidRootEntry(name));
  }
  return packagePath_ / name;
}

}  // namespace galdrine::format
