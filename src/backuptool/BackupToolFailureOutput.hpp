#pragma once
// BackupToolFailureOutput is the one table from a BackupToolError to an exit status and the
// fixed line for standard error. No other place turns an error into words.
//
// Exit statuses: 2 misuse of the command line, 3 no usable credential, 4 package failure,
// 5 source or output failure.

#include <cstdint>
#include <string_view>
#include <utility>

#include "backuptool/BackupToolError.hpp"
#include "backuptool/BackupToolUsage.hpp"

namespace galdrine::backuptool {

struct BackupToolFailureOutput {
  std::int32_t exitCode;
  std::string_view standardError;

  friend constexpr bool operator==(const BackupToolFailureOutput&, const BackupToolFailureOutput&) = default;
};

[[nodiscard]] constexpr BackupToolFailureOutput failureOutput(BackupToolError error) {
  using enum BackupToolError;
  switch (error) {  // no default: a new case without a row does not compile
    case invalidArguments:
      return {2, backupToolUsageText};
    case appCodeForbidden:
      return {2, "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n"};
    case credentialInArguments:
      return {2, "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n"};
    case credentialUnavailable:
      return {3, "The credential could not be read securely.\n"};
    case invalidCredential:
      return {3, "The portable credential is invalid.\n"};
    case passphraseTooWeak:
      return {3,
              "The backup passphrase is too weak: use at least 8 characters, 4 of them different, not only digits, "
              "no short pattern repeated, and no tab, line break or blank at either end.\n"};
    case passphraseMismatch:
      return {3, "The two passphrase entries differ.\n"};
    case invalidPackage:
      return {4, "The backup package is invalid or unsupported.\n"};
    case unlockFailed:
      return {4, "The portable credential did not unlock the backup.\n"};
    case packageForked:
      return {4, "The backup package has diverging branches; a snapshot can only be added to a single branch.\n"};
    case packageExists:
      return {5, "The backup package already exists.\n"};
    case packageLocationUnavailable:
      return {5, "A new backup package needs a path ending in .galdrine inside an existing directory.\n"};
    case sourceUnavailable:
      return {5, "The source directory is unavailable.\n"};
    case sourceEmpty:
      return {5, "The source directory holds no photo or video to back up.\n"};
    case sourceTooLarge:
      return {5, "The source directory exceeds what one backup snapshot can hold.\n"};
    case sourceChanged:
      return {5, "A source file changed or could not be read while it was backed up.\n"};
    case outputWriteFailed:
      return {5, "The backup package could not be written safely.\n"};
    case operationFailed:
      return {4, "Galdrine backup operation failed safely.\n"};
  }
  std::unreachable();
}

}  // namespace galdrine::backuptool
