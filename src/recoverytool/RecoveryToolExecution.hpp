#pragma once
// RecoveryToolExecution is the whole outcome of one run: the exit status and the
// bytes for the two output streams. On success standardError is empty; on failure
// standardOutput is empty.

#include <cstdint>

#include "platform/Bytes.hpp"

namespace galdrine::recoverytool {

struct RecoveryToolExecution {
  std::int32_t exitCode = 0;
  Bytes standardOutput;
  Bytes standardError;

  friend bool operator==(const RecoveryToolExecution&, const RecoveryToolExecution&) = default;
};

}  // namespace galdrine::recoverytool
