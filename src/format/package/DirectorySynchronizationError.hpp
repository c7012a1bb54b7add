#pragma once
// DirectorySynchronizationError is why a directory could not be made durable. Cases
// stand in the order of the synchronisation's contract.

#include <cstdint>

namespace galdrine::format {

struct DirectorySynchronizationError {
  enum class Code : std::uint8_t {
    systemCallFailed,  // payload: the errno of the failed open or fsync
    invalidDirectory,
  };

  Code code;
  std::int32_t errorNumber = 0;  // zero for invalidDirectory

  static constexpr DirectorySynchronizationError systemCallFailed(std::int32_t errorNumber) { return {Code::systemCallFailed, errorNumber}; }
  static constexpr DirectorySynchronizationError invalidDirectory() { return {Code::invalidDirectory}; }

  friend constexpr bool operator==(const DirectorySynchronizationError&, const DirectorySynchronizationError&) = default;
};

}  // namespace galdrine::format
