#include "GaldrineRecoveryCore/FixtureFiles.hpp"

#include <algorithm>

#include "GaldrinePlatform/GaldrineBoundedFileRead.hpp"
#include "GaldrinePlatform/GaldrineFileURL.hpp"
#include "GaldrinePlatform/GaldrineUTF8.hpp"

namespace FixtureFiles {

namespace {

constexpr std::size_t maximumIdentifierByteCount = 128;
constexpr std::size_t maximumFilenameByteCount = 255;

}  // namespace

std::expected<Bytes, GaldrineRecoveryFixtureVerificationError> readBoundedRegularFile(const std::filesystem::path& url,
                                                                                      std::size_t maximumByteCount) {
  // The platform read opens without following a final symbolic link, checks the open file to
  // be regular and within the bound, and never reads more than one byte past it.
  auto bytes = GaldrinePlatformFiles::readBoundedRegularFile(url, 0, maximumByteCount);
  if (!bytes) return std::unexpected(GaldrineRecoveryFixtureVerificationError::invalidFixture);
  return std::move(*bytes);
}

bool validIdentifier(std::string_view identifier) {
  if (identifier.empty() || identifier.size() > maximumIdentifierByteCount) return false;
  return std::ranges::all_of(identifier, [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') || character == '-';
  });
}

bool validRelativeFilename(std::string_view name) {
  if (name.empty() || name.size() > maximumFilenameByteCount || !GaldrineUTF8::isValid(name)) return false;
  if (name.find('/') != std::string_view::npos || name.find('\\') != std::string_view::npos) return false;
  if (name == "." || name == "..") return false;
  return std::filesystem::path(name).filename().native() == name;
}

std::optional<std::filesystem::path> fixtureURL(const std::filesystem::path& base, std::string_view name) {
  if (!validRelativeFilename(name)) return std::nullopt;
  const std::filesystem::path joined = GaldrineFileURL::standardized(base / name);
  if (joined.parent_path() != base) return std::nullopt;
  return joined;
}

}  // namespace FixtureFiles
