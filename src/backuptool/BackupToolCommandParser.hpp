#pragma once
// BackupToolCommandParser reads the argument list of galdrine-backup (without the program's
// name) into one command. It runs before any credential is asked for and looks at nothing on
// disk; path arguments come back absolute and standardised.
//
// Checks run in this order, the first that decides ends it:
//   1. exactly one of "help", "--help", "-h": help (only as the one and only argument);
//   2. any argument "--app-code" or "--app-code=...": appCodeForbidden;
//   3. any argument "--backup-passphrase=...", "--recovery-key=...", "--new-recovery-key=..."
//      or "--credential=...": credentialInArguments;
//   4. the command word and its own arguments; every other failure, no arguments at all
//      included, is invalidArguments.
// Steps 2 and 3 see every argument, also one that a later step would take as a value.
//
// "create" takes one package path, "--from" with the token after it whatever it is,
// "--backup-passphrase" and "--new-recovery-key" (at least one), and "--credential-stdin",
// which needs the passphrase since nothing else is read. "add" takes one package path,
// "--from", exactly one of "--backup-passphrase" and "--recovery-key", and
// "--credential-stdin". Each may stand once, in any order; a path may not begin with "-".

#include <expected>
#include <span>
#include <string>

#include "backuptool/BackupToolCommand.hpp"
#include "backuptool/BackupToolError.hpp"

namespace galdrine::backuptool {

namespace BackupToolCommandParser {

[[nodiscard]] std::expected<BackupToolCommand, BackupToolError> parse(std::span<const std::string> arguments);

}  // namespace BackupToolCommandParser

}  // namespace galdrine::backuptool
