#pragma once
// BackupTool runs one command line of galdrine-backup from start to end and gives back
// what the process should print and its exit status; it never exits, prints or fails itself.
// Every failure becomes the one row of BackupToolFailureOutput that belongs to it, with an
// empty standard output.
//
// Credentials are read only after the whole command line parsed, and after the package's
// location and the source directory were looked at, so a person is never asked for a secret
// that a mistyped path would waste. They are wiped on every way out of the run.

#include <cstdint>
#include <span>
#include <string>

#include "backuptool/BackupToolCredentialReading.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

// BackupToolExecution is the whole outcome of one run: the exit status and the bytes for the
// two output streams. On success standardError is empty; on failure standardOutput is empty.
// Standard output may hold the words of a new recovery key: whoever holds the record wipes it
// once it is written.
struct BackupToolExecution {
  std::int32_t exitCode = 0;
  Bytes standardOutput;
  Bytes standardError;

  friend bool operator==(const BackupToolExecution&, const BackupToolExecution&) = default;
};

namespace BackupTool {

// execute parses `arguments` (without the program's name) and runs the command, writing
// packages with the system's randomness and clock.
[[nodiscard]] BackupToolExecution execute(std::span<const std::string> arguments,
                                          BackupToolCredentialReading& credentialReader);

}  // namespace BackupTool

}  // namespace galdrine::backuptool
