#pragma once
// BackupToolCommand is one parsed galdrine-backup command line. Each case is a record of its
// own, so running a command is a visit that the compiler checks for completeness. Paths are
// absolute and standardised; nothing on disk has been looked at.

#include <filesystem>
#include <variant>

#include "credential/CredentialInput.hpp"
#include "envelope/PortableKeyFactorV1.hpp"

namespace galdrine::backuptool {

struct BackupToolCommand {
  // Create makes a new package at packagePath; at least one of the two credentials is asked for.
  // The input applies to the passphrase, the only credential that is read.
  struct Create {
    std::filesystem::path packagePath;
    std::filesystem::path sourcePath;
    bool backupPassphrase = false;
    bool newRecoveryKey = false;
    credential::CredentialInput credentialInput = credential::CredentialInput::hiddenTerminal;
    friend bool operator==(const Create&, const Create&) = default;
  };
  // Add appends a snapshot of sourcePath to the package, unlocked with `factor`.
  struct Add {
    std::filesystem::path packagePath;
    std::filesystem::path sourcePath;
    envelope::PortableKeyFactorV1 factor = envelope::PortableKeyFactorV1::backupPassphrase;
    credential::CredentialInput credentialInput = credential::CredentialInput::hiddenTerminal;
    friend bool operator==(const Add&, const Add&) = default;
  };
  struct Help {
    friend bool operator==(const Help&, const Help&) = default;
  };

  std::variant<Create, Add, Help> value;

  friend bool operator==(const BackupToolCommand&, const BackupToolCommand&) = default;
};

}  // namespace galdrine::backuptool
