#pragma once
// BackupToolCredentials reads the credentials of a galdrine-backup run through a
// BackupToolCredentialReading, with the bound and the rules both tools share (credential::BoundedCredentialRead):
// a failed reader is credentialUnavailable, an empty credential or one above the bound
// invalidCredential. What the caller is given, it owns and wipes; everything else read on the
// way is wiped before these return, on every path.

#include <expected>

#include "backuptool/BackupToolCredentialReading.hpp"
#include "backuptool/BackupToolError.hpp"
#include "writer/BackupRecoveryKey.hpp"

namespace galdrine::backuptool {

namespace BackupToolCredentials {

// readNewBackupPassphrase reads a passphrase to set, in this order: the reading; the backup
// passphrase policy (passphraseTooWeak), before a second entry is asked for; from the terminal
// only, a second entry (a failed reading credentialUnavailable), which must equal the first
// (passphraseMismatch). A redirected standard input is read once.
[[nodiscard]] std::expected<Bytes, BackupToolError> readNewBackupPassphrase(BackupToolCredentialReading& reader,
                                                                            credential::CredentialInput input);

// readBackupPassphrase reads the passphrase of an existing package, once and without the policy,
// which never judges a passphrase already set.
[[nodiscard]] std::expected<Bytes, BackupToolError> readBackupPassphrase(BackupToolCredentialReading& reader,
                                                                         credential::CredentialInput input);

// readRecoveryKey reads the 24 words and turns them into the key; words that do not make a key
// (count, an unknown word, the checksum, text that is not UTF-8) are invalidCredential.
[[nodiscard]] std::expected<writer::BackupRecoveryKey, BackupToolError> readRecoveryKey(
    BackupToolCredentialReading& reader, credential::CredentialInput input);

}  // namespace BackupToolCredentials

}  // namespace galdrine::backuptool
