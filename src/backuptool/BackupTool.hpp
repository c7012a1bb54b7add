#pragma once
// BackupTool runs one command line of galdrine-backup from start to end and gives back
// what the process should print and its exit status; it never exits, prints or fails itself.
// Every failure becomes the one row of BackupToolFailureOutput that belongs to it, with an
// empty standard output.
//
// Credentials are read only after the whole command line parsed, and after the package's
// location and the source directory were looked at, so a person is never asked for a secret
// that a mistyped path would waste. They are wiped on every way out of the run.

#include <span>
#include <string>

#include "backuptool/BackupToolCredentialReading.hpp"
#include "backuptool/BackupToolExecution.hpp"
#include "writer/BackupWriterSettings.hpp"

namespace galdrine::backuptool {

namespace BackupTool {

// execute parses `arguments` (without the program's name) and runs the command, writing
// packages with `settings` (the system's randomness and clock by default; tests pass others).
[[nodiscard]] BackupToolExecution execute(std::span<const std::string> arguments, BackupToolCredentialReading& credentialReader,
                                          const writer::BackupWriterSettings& settings = {});

}  // namespace BackupTool

}  // namespace galdrine::backuptool
