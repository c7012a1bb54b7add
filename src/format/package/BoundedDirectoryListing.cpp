#include "format/package/BoundedDirectoryListing.hpp"

#include <dirent.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include "platform/FileDescriptor.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::format {

namespace BoundedDirectoryListing {

namespace {

using Error = BoundedDirectoryListingError;

struct DirectoryStreamClose {
  void operator()(DIR* stream) const { ::closedir(stream); }
};
using DirectoryStream = std::unique_ptr<DIR, DirectoryStreamClose>;

[[nodiscard]] bool isValidEntryName(std::string_view name) {
  return !name.empty() && name.size() <= maximumEntryNameByteCount && platform::UTF8::isValid(name);
}

[[nodiscard]] bool beginsWithAnyOf(std::string_view name, std::span<const std::string_view> prefixes) {
  return std::ranges::any_of(prefixes, [name](std::string_view prefix) { return name.starts_with(prefix); });
}

[[nodiscard]] std::expected<DirectoryStream, Error> openStream(const std::filesystem::path& directory) {
  auto descriptor = platform::FileDescriptor::openDirectory(directory);
  if (!descriptor) return std::unexpected(Error::directoryUnavailable());
  DirectoryStream stream(::fdopendir(descriptor->get()));
  if (!stream) return std::unexpected(Error::directoryUnavailable());  // the descriptor closes itself
  (void)descriptor->release();                                         // the stream owns it now
  return stream;
}

}  // namespace

std::expected<std::vector<std::string>, Error> names(const std::filesystem::path& directory,
                                                     std::int64_t maximumCount) {
  static constexpr std::array<std::string_view, 1> everyName{""};
  return names(directory, maximumCount, everyName);
}

std::expected<std::vector<std::string>, Error> names(const std::filesystem::path& directory, std::int64_t maximumCount,
                                                     std::span<const std::string_view> prefixes) {
  if (maximumCount < 0) return std::unexpected(Error::invalidMaximumCount());
  auto stream = openStream(directory);
  if (!stream) return std::unexpected(stream.error());

  const auto bound = static_cast<std::uint64_t>(maximumCount);
  std::vector<std::string> kept;
  kept.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(bound, maximumReservedNameCount)));
  while (true) {  // leaves by returning: at the end of the stream or on the first failure
    errno = 0;
    const dirent* entry = ::readdir(stream->get());
    if (entry == nullptr) {
      if (errno != 0) return std::unexpected(Error::directoryUnavailable());  // a failed read, not the end
      return kept;
    }
    const std::string_view name(entry->d_name);
    if (!isValidEntryName(name)) return std::unexpected(Error::invalidEntryName());
    if (name == "." || name == "..") continue;
    if (!beginsWithAnyOf(name, prefixes)) continue;
    if (kept.size() >= bound) return std::unexpected(Error::limitExceeded(maximumCount));
    kept.emplace_back(name);
  }
}

}  // namespace BoundedDirectoryListing

}  // namespace galdrine::format
