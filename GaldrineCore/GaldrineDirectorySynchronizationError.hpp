#pragma once
// GaldrineDirectorySynchronizationError is why a directory could not be made durable. Cases
// stand in the order of the synchronisation's contract.

#include <cstdint>

struct GaldrineDirectorySynchronizationError {
  enum class Code : std::uint8_t {
    systemCallFailed,  // payload: the errno of the failed open or fsync
    invalidDirectory,
  };

  Code code;
  std::int32_t errorNumber = 0;  // zero for invalidDirectory

  static constexpr GaldrineDirectorySynchronizationError systemCallFailed(std::int32_t errorNumber) { return {Code::systemCallFailed, errorNumber}; }
  static constexpr GaldrineDirectorySynchronizationError invalidDirectory() { return {Code::invalidDirectory}; }

  friend constexpr bool operator==(const GaldrineDirectorySynchronizationError&, const GaldrineDirectorySynchronizationError&) = default;
};
