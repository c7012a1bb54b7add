#include "GaldrineBackupCLI/TerminalBackupCredentialReader.hpp"

#include <utility>

#include "GaldrineRecoveryCLI/TerminalCredentialReader.hpp"

std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> TerminalBackupCredentialReader::read(
    GaldrineRecoveryToolCredentialFactorV1 factor, GaldrineRecoveryToolCredentialInputV1 input,
    std::int64_t maximumByteCount) {
  TerminalCredentialReader reader;
  return reader.read(factor, input, maximumByteCount);
}

std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> TerminalBackupCredentialReader::readRepeatedPassphrase(
    std::int64_t maximumByteCount) {
  auto credential = TerminalCredentialInput::readHiddenPrompt(repeatedPassphrasePrompt, maximumByteCount);
  if (!credential) return std::unexpected(GaldrineRecoveryToolCredentialReadingFailure{});
  return std::move(*credential);
}
