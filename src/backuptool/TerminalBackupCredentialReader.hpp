#pragma once
// TerminalBackupCredentialReader reads galdrine-backup's credentials exactly as galdrine-recovery
// does (TerminalCredentialReader: a hidden prompt, or a redirected standard input), and asks
// for a new passphrase a second time with its own hidden prompt.

#include <string_view>

#include "backuptool/BackupToolCredentialReading.hpp"

namespace galdrine::backuptool {

class TerminalBackupCredentialReader final : public BackupToolCredentialReading {
 public:
  static constexpr std::string_view repeatedPassphrasePrompt = "Repeat Backup Passphrase: ";

  [[nodiscard]] std::expected<Bytes, credential::CredentialReadingFailure> read(envelope::PortableKeyFactorV1 factor,
                                                                                credential::CredentialInput input,
                                                                                std::int64_t maximumByteCount) override;
  [[nodiscard]] std::expected<Bytes, credential::CredentialReadingFailure> readRepeatedPassphrase(
      std::int64_t maximumByteCount) override;
};

}  // namespace galdrine::backuptool
