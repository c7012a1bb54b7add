#pragma once
// BackupToolCredentialReading is how credentials enter galdrine-backup: the reading of one
// credential that both tools share, and a second hidden entry for a new passphrase, which a person
// types twice so that a slip of the finger cannot lock the backup for good.

#include <cstdint>
#include <expected>

#include "credential/CredentialReading.hpp"

namespace galdrine::backuptool {

class BackupToolCredentialReading : public credential::CredentialReading {
 public:
  // readRepeatedPassphrase asks on the terminal for the new backup passphrase once more, with
  // the same bound; the caller owns and wipes what it is given.
  [[nodiscard]] virtual std::expected<Bytes, credential::CredentialReadingFailure> readRepeatedPassphrase(
      std::int64_t maximumByteCount) = 0;
};

}  // namespace galdrine::backuptool
