#pragma once
// RecoveryToolFailureOutput is the one table from a RecoveryToolError to an exit status and
// the fixed text for standard error. No other place turns an error into words.
//
// Exit statuses: 2 misuse of the command line, 3 no usable credential, 4 package or
// verification failure, 5 destination or output failure.

#include <cstdint>
#include <string_view>
#include <utility>

#include "recoverytool/RecoveryToolError.hpp"
#include "recoverytool/RecoveryToolUsage.hpp"

namespace galdrine::recoverytool {

struct RecoveryToolFailureOutput {
  std::int32_t exitCode;
  std::string_view standardError;

  friend constexpr bool operator==(const RecoveryToolFailureOutput&, const RecoveryToolFailureOutput&) = default;
};

[[nodiscard]] constexpr RecoveryToolFailureOutput failureOutput(RecoveryToolError error) {
  using enum RecoveryToolError;
  switch (error) {  // no default: a new case without a row does not compile
    case invalidArguments:
      return {2, recoveryToolUsageText};
    case appCodeForbidden:
      return {2, "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n"};
    case credentialInArguments:
      return {2, "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n"};
    case credentialUnavailable:
      return {3, "The credential could not be read securely.\n"};
    case invalidCredential:
      return {3, "The portable credential is invalid.\n"};
    case invalidPackage:
      return {4, "The backup package is invalid or unsupported.\n"};
    case unlockFailed:
      return {4, "The portable credential did not unlock the backup.\n"};
    case packageUnavailable:
      return {4, "The backup package is unavailable.\n"};
    case resourceLimitExceeded:
      return {4, "The backup exceeds safe recovery limits.\n"};
    case integrityFailure:
      return {4, "Backup integrity verification failed.\n"};
    case snapshotSelectionNotFound:
      return {4, "The selected snapshot is not present in the current authenticated inspection. Run inspect again.\n"};
    case destinationExists:
      return {5, "The recovery destination already exists.\n"};
    case destinationUnavailable:
      return {5, "The recovery destination is unavailable.\n"};
    case outputWriteFailed:
      return {5, "Recovery output could not be written safely.\n"};
    case compatibilityVerificationFailed:
      return {4, "Galdrine compatibility verification failed.\n"};
    case operationFailed:
      return {4, "Galdrine recovery operation failed safely.\n"};
  }
  std::unreachable();
}

}  // namespace galdrine::recoverytool
