#pragma once
// RecoveryTool runs one command line of galdrine-recovery from start to end and
// gives back what the process should print and its exit status; it never exits, prints or
// fails itself. Every failure becomes the one row of RecoveryToolFailureOutput that belongs
// to it, with an empty standard output.
//
// A credential is read only after the whole command line parsed, at most once, and is
// wiped on every way out of the run that read it.

#include <cstdint>
#include <expected>
#include <span>
#include <string>

#include "credential/CredentialReading.hpp"
#include "recoverytool/RecoveryToolExecution.hpp"
#include "recoverytool/RecoveryRequest.hpp"
#include "recoverytool/RecoveryToolBackend.hpp"
#include "recoverytool/RecoveryToolError.hpp"

namespace galdrine::recoverytool {

namespace RecoveryTool {

// The bound for a credential, in bytes, on either input.
inline constexpr std::int64_t maximumCredentialByteCount = 16384;

// execute parses `arguments` (without the program's name) and runs the command against
// `backend`.
[[nodiscard]] RecoveryToolExecution execute(std::span<const std::string> arguments,
                                                      credential::CredentialReading& credentialReader,
                                                      RecoveryToolBackend& backend);

// execute with LiveBackend, the backend that reaches the recovery engine: what the process
// entry calls.
[[nodiscard]] RecoveryToolExecution execute(std::span<const std::string> arguments,
                                                      credential::CredentialReading& credentialReader);

// readCredential asks the reader for the request's credential. Any reader failure becomes
// credentialUnavailable; an empty credential or one above maximumCredentialByteCount is
// wiped and becomes invalidCredential. On success the caller owns the bytes and wipes them.
[[nodiscard]] std::expected<Bytes, RecoveryToolError> readCredential(credential::CredentialReading& credentialReader,
                                                                     const RecoveryRequest& request);

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
