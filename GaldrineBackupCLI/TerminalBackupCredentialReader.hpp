#pragma once
// TerminalBackupCredentialReader reads galdrine-backup's credentials exactly as galdrine-recovery
// does (TerminalCredentialReader: a hidden prompt, or a redirected standard input), and asks
// for a new passphrase a second time with its own hidden prompt.

#include <string_view>

#include "GaldrineBackupCLI/BackupToolCredentialReading.hpp"

class TerminalBackupCredentialReader final : public BackupToolCredentialReading {
 public:
  static constexpr std::string_view repeatedPassphrasePrompt = "Repeat Backup Passphrase: ";

  [[nodiscard]] std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> read(
      GaldrineRecoveryToolCredentialFactorV1 factor, GaldrineRecoveryToolCredentialInputV1 input,
      std::int64_t maximumByteCount) override;
  [[nodiscard]] std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> readRepeatedPassphrase(
      std::int64_t maximumByteCount) override;
};
