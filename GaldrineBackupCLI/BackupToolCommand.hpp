#pragma once
// BackupToolCommand is one parsed galdrine-backup command line. Each case is a record of its
// own, so running a command is a visit that the compiler checks for completeness. Paths are
// absolute and standardised; nothing on disk has been looked at.

#include <filesystem>
#include <variant>

#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialFactorV1.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialInputV1.hpp"

struct BackupToolCommand {
  // Create makes a new package at packageURL; at least one of the two credentials is asked for.
  // The input applies to the passphrase, the only credential that is read.
  struct Create {
    std::filesystem::path packageURL;
    std::filesystem::path sourceURL;
    bool backupPassphrase = false;
    bool newRecoveryKey = false;
    GaldrineRecoveryToolCredentialInputV1 credentialInput = GaldrineRecoveryToolCredentialInputV1::hiddenTerminal;
    friend bool operator==(const Create&, const Create&) = default;
  };
  // Add appends a snapshot of sourceURL to the package, unlocked with `factor`.
  struct Add {
    std::filesystem::path packageURL;
    std::filesystem::path sourceURL;
    GaldrineRecoveryToolCredentialFactorV1 factor = GaldrineRecoveryToolCredentialFactorV1::backupPassphrase;
    GaldrineRecoveryToolCredentialInputV1 credentialInput = GaldrineRecoveryToolCredentialInputV1::hiddenTerminal;
    friend bool operator==(const Add&, const Add&) = default;
  };
  struct Help {
    friend bool operator==(const Help&, const Help&) = default;
  };

  std::variant<Create, Add, Help> value;

  friend bool operator==(const BackupToolCommand&, const BackupToolCommand&) = default;
};
