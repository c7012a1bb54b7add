#pragma once
// GaldrineBoundedDirectoryListingError is why a bounded listing failed. Cases stand in the
// order of the listing's contract.

#include <cstdint>

struct GaldrineBoundedDirectoryListingError {
  enum class Code : std::uint8_t {
    limitExceeded,  // payload: the maximumCount that one more entry would have passed
    invalidMaximumCount,
    directoryUnavailable,
    invalidEntryName,
  };

  Code code;
  std::int64_t maximumCount = 0;  // zero for the cases without one

  static constexpr GaldrineBoundedDirectoryListingError limitExceeded(std::int64_t maximumCount) { return {Code::limitExceeded, maximumCount}; }
  static constexpr GaldrineBoundedDirectoryListingError invalidMaximumCount() { return {Code::invalidMaximumCount}; }
  static constexpr GaldrineBoundedDirectoryListingError directoryUnavailable() { return {Code::directoryUnavailable}; }
  static constexpr GaldrineBoundedDirectoryListingError invalidEntryName() { return {Code::invalidEntryName}; }

  friend constexpr bool operator==(const GaldrineBoundedDirectoryListingError&, const GaldrineBoundedDirectoryListingError&) = default;
};
