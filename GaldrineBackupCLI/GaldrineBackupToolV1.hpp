#pragma once
// GaldrineBackupToolV1 runs one command line of galdrine-backup from start to end and gives back
// what the process should print and its exit status; it never exits, prints or fails itself.
// Every failure becomes the one row of BackupToolFailureOutput that belongs to it, with an
// empty standard output.
//
// Credentials are read only after the whole command line parsed, and after the package's
// location and the source directory were looked at, so a person is never asked for a secret
// that a mistyped path would waste. They are wiped on every way out of the run.

#include <span>
#include <string>

#include "GaldrineBackupCLI/BackupToolCredentialReading.hpp"
#include "GaldrineBackupCLI/BackupToolExecution.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterSettingsV1.hpp"

namespace GaldrineBackupToolV1 {

// execute parses `arguments` (without the program's name) and runs the command, writing
// packages with `settings` (the system's randomness and clock by default; tests pass others).
[[nodiscard]] BackupToolExecution execute(std::span<const std::string> arguments, BackupToolCredentialReading& credentialReader,
                                          const GaldrineBackupWriterSettingsV1& settings = {});

}  // namespace GaldrineBackupToolV1
