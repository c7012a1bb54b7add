#pragma once
// GaldrineRecoveryToolExecutionV1 is the whole outcome of one run: the exit status and the
// bytes for the two output streams. On success standardError is empty; on failure
// standardOutput is empty.

#include <cstdint>

#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineRecoveryToolExecutionV1 {
  std::int32_t exitCode = 0;
  Bytes standardOutput;
  Bytes standardError;

  friend bool operator==(const GaldrineRecoveryToolExecutionV1&, const GaldrineRecoveryToolExecutionV1&) = default;
};
