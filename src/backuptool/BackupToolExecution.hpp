#pragma once
// BackupToolExecution is the whole outcome of one galdrine-backup run: the exit status and the
// bytes for the two output streams. On success standardError is empty; on failure
// standardOutput is empty. Standard output may hold the words of a new recovery key: whoever
// holds the record wipes it once it is written.

#include <cstdint>

#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

struct BackupToolExecution {
  std::int32_t exitCode = 0;
  Bytes standardOutput;
  Bytes standardError;

  friend bool operator==(const BackupToolExecution&, const BackupToolExecution&) = default;
};

}  // namespace galdrine::backuptool
