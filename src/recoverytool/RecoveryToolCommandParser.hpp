#pragma once
// RecoveryToolCommandParser reads the argument list (without the program's name) into one
// Command. It runs before any credential is asked for, so a bad command line never reaches
// the terminal or the package. Path arguments come back absolute and standardised
// (platform::FilePath::fromArgument); nothing on disk is looked at.
//
// Checks run in this order, the first that decides ends it:
//   1. no arguments: self-test;  2. exactly "self-test": self-test;
//   3. exactly one of "help", "--help", "-h": help (only as the one and only argument);
//   4. any argument "--app-code" or "--app-code=...": appCodeForbidden;
//   5. any argument "--backup-passphrase=...", "--recovery-key=..." or "--credential=...":
//      credentialInArguments;
//   6. the command word and its own arguments; every other failure is invalidArguments.
// Steps 4 and 5 see every argument, also one that a later step would take as a value.

#include <expected>
#include <span>
#include <string>

#include "recoverytool/Command.hpp"
#include "recoverytool/RecoveryToolError.hpp"

namespace galdrine::recoverytool {

namespace RecoveryToolCommandParser {

[[nodiscard]] std::expected<Command, RecoveryToolError> parse(std::span<const std::string> arguments);

}  // namespace RecoveryToolCommandParser

}  // namespace galdrine::recoverytool
