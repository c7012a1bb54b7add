#pragma once
// BoundedDirectoryListingError is why a bounded listing failed. Cases stand in the
// order of the listing's contract.

#include <cstdint>

namespace galdrine::format {

struct BoundedDirectoryListingError {
  enum class Code : std::uint8_t {
    limitExceeded,  // payload: the maximumCount that one more entry would have passed
    invalidMaximumCount,
    directoryUnavailable,
    invalidEntryName,
  };

  Code code;
  std::int64_t maximumCount = 0;  // zero for the cases without one

  static constexpr BoundedDirectoryListingError limitExceeded(std::int64_t maximumCount) { return {Code::limitExceeded, maximumCount}; }
  static constexpr BoundedDirectoryListingError invalidMaximumCount() { return {Code::invalidMaximumCount}; }
  static constexpr BoundedDirectoryListingError directoryUnavailable() { return {Code::directoryUnavailable}; }
  static constexpr BoundedDirectoryListingError invalidEntryName() { return {Code::invalidEntryName}; }

  friend constexpr bool operator==(const BoundedDirectoryListingError&, const BoundedDirectoryListingError&) = default;
};

}  // namespace galdrine::format
