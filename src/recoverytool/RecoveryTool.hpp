#pragma once
// RecoveryTool runs one command line of galdrine-recovery from start to end and
// gives back what the process should print and its exit status; it never exits, prints or
// fails itself. Every failure becomes the one row of RecoveryToolFailureOutput that belongs
// to it, with an empty standard output.
//
// A credential is read only after the whole command line parsed, at most once, through
// credential::BoundedCredentialRead, and is wiped on every way out of the run that read it.

#include <cstdint>
#include <span>
#include <string>

#include "credential/BoundedCredentialRead.hpp"
#include "credential/CredentialReading.hpp"
#include "platform/Bytes.hpp"
#include "recoverytool/RecoveryToolBackend.hpp"

namespace galdrine::recoverytool {

// RecoveryToolExecution is the whole outcome of one run: the exit status and the bytes for
// the two output streams. On success standardError is empty; on failure standardOutput is
// empty.
struct RecoveryToolExecution {
  std::int32_t exitCode = 0;
  Bytes standardOutput;
  Bytes standardError;

  friend bool operator==(const RecoveryToolExecution&, const RecoveryToolExecution&) = default;
};

namespace RecoveryTool {

// The bound for a credential, in bytes, on either input: the one both tools share.
inline constexpr std::int64_t maximumCredentialByteCount = credential::BoundedCredentialRead::maximumByteCount;

// execute parses `arguments` (without the program's name) and runs the command against
// `backend`.
[[nodiscard]] RecoveryToolExecution execute(std::span<const std::string> arguments,
                                            credential::CredentialReading& credentialReader,
                                            RecoveryToolBackend& backend);

// execute with LiveBackend, the backend that reaches the recovery engine: what the process
// entry calls.
[[nodiscard]] RecoveryToolExecution execute(std::span<const std::string> arguments,
                                            credential::CredentialReading& credentialReader);

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
