#include "GaldrineRecoveryCore/FixtureScratchDirectory.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <string>
#include <system_error>

#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "GaldrinePlatform/GaldrineFileURL.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;

}  // namespace

std::expected<FixtureScratchDirectory, Error> FixtureScratchDirectory::create(std::string_view prefix) {
  std::error_code failure;
  const std::filesystem::path temporary = std::filesystem::temp_directory_path(failure);
  if (failure) return std::unexpected(Error::invalidFixture);
  const auto uuid = GaldrinePlatformRandom::lowercaseUUIDText();
  if (!uuid) return std::unexpected(Error::invalidFixture);
  std::filesystem::path path = GaldrineFileURL::standardized(temporary / (std::string(prefix) + *uuid));
  // mkdir refuses anything already there, a symbolic link included.
  if (::mkdir(path.c_str(), 0700) != 0) return std::unexpected(Error::invalidFixture);
  return FixtureScratchDirectory(std::move(path));
}

FixtureScratchDirectory::FixtureScratchDirectory(FixtureScratchDirectory&& other) noexcept
    : path_(std::move(other.path_)) {
  other.path_.clear();
}

FixtureScratchDirectory::~FixtureScratchDirectory() {
  if (path_.empty()) return;
  std::error_code ignored;  // nothing more can be done about a tree that will not go
  std::filesystem::remove_all(path_, ignored);
}

std::expected<std::filesystem::path, Error> FixtureScratchDirectory::write(std::string_view name, ByteView bytes) const {
  std::filesystem::path url = path_ / name;
  auto file = GaldrineFileDescriptor::open(url, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!file) return std::unexpected(Error::invalidFixture);
  if (!GaldrinePlatformFiles::writeAll(file->get(), bytes)) return std::unexpected(Error::invalidFixture);
  if (!file->close()) return std::unexpected(Error::invalidFixture);
  return url;
}
