#pragma once
// BackupToolError is every outcome of a galdrine-backup run that the user can tell apart, in
// the order of the error table (BackupToolFailureOutput). The cases carry no text: the words
// belong to the table alone.

#include <cstdint>

namespace galdrine::backuptool {

enum class BackupToolError : std::uint8_t {
  invalidArguments,
  appCodeForbidden,
  credentialInArguments,
  credentialUnavailable,
  invalidCredential,
  passphraseTooWeak,
  passphraseMismatch,
  invalidPackage,
  unlockFailed,
  packageForked,
  packageExists,
  packageLocationUnavailable,
  sourceUnavailable,
  sourceEmpty,
  sourceTooLarge,
  sourceChanged,
  outputWriteFailed,
  // A failure that no case above describes (a failed random source, a missing word list, a
  // library the format refused): the table's one generic text.
  operationFailed,
};

}  // namespace galdrine::backuptool
