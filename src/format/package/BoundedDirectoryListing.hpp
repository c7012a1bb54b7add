#pragma once
// BoundedDirectoryListing lists a directory that may hold hostile content with a hard
// ceiling: it keeps at most maximumCount names, reserves room for at most 256 up front, and
// fails on the first matching entry past the bound, so neither memory nor time follows what
// the directory holds (apart from the skipped names).
//
// Checks, in order: a negative bound (invalidMaximumCount); opening the directory read-only
// without following a symbolic link (directoryUnavailable, so a link to a directory fails);
// then for each entry as read: a name outside 1 to 1024 bytes or not valid UTF-8
// (invalidEntryName, whether or not a prefix would match it); "." and ".." skipped; a name
// beginning with none of the prefixes skipped without counting; one more name than the bound
// (limitExceeded with the bound); a failed read (directoryUnavailable). Names come in the
// order the directory gives them, which is not defined: a caller that needs an order sorts.
// Nothing is held open on any way out.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::format {

// BoundedDirectoryListingError is why a bounded listing failed. Cases stand in the
// order of the listing's contract.
struct BoundedDirectoryListingError {
  enum class Code : std::uint8_t {
    limitExceeded,  // payload: the maximumCount that one more entry would have passed
    invalidMaximumCount,
    directoryUnavailable,
    invalidEntryName,
  };

  Code code;
  std::int64_t maximumCount = 0;  // zero for the cases without one

  static constexpr BoundedDirectoryListingError limitExceeded(std::int64_t maximumCount) {
    return {Code::limitExceeded, maximumCount};
  }
  static constexpr BoundedDirectoryListingError invalidMaximumCount() { return {Code::invalidMaximumCount}; }
  static constexpr BoundedDirectoryListingError directoryUnavailable() { return {Code::directoryUnavailable}; }
  static constexpr BoundedDirectoryListingError invalidEntryName() { return {Code::invalidEntryName}; }

  friend constexpr bool operator==(const BoundedDirectoryListingError&, const BoundedDirectoryListingError&) = default;
};

namespace BoundedDirectoryListing {

inline constexpr std::size_t maximumReservedNameCount = 256;
inline constexpr std::size_t maximumEntryNameByteCount = 1024;

// names gives every entry name, hidden ones included.
[[nodiscard]] std::expected<std::vector<std::string>, BoundedDirectoryListingError> names(
    const std::filesystem::path& directory, std::int64_t maximumCount);

// names gives the names that begin with at least one of `prefixes`; only those count
// against the bound.
[[nodiscard]] std::expected<std::vector<std::string>, BoundedDirectoryListingError> names(
    const std::filesystem::path& directory, std::int64_t maximumCount, std::span<const std::string_view> prefixes);

}  // namespace BoundedDirectoryListing

}  // namespace galdrine::format
