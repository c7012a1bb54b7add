#include "backuptool/TerminalBackupCredentialReader.hpp"

#include <utility>

#include "credential/TerminalCredentialReader.hpp"

namespace galdrine::backuptool {

std::expected<Bytes, credential::CredentialReadingFailure> TerminalBackupCredentialReader::read(
    envelope::PortableKeyFactorV1 factor, credential::CredentialInput input, std::int64_t maximumByteCount) {
  credential::TerminalCredentialReader reader;
  return reader.read(factor, input, maximumByteCount);
}

std::expected<Bytes, credential::CredentialReadingFailure> TerminalBackupCredentialReader::readRepeatedPassphrase(
    std::int64_t maximumByteCount) {
  auto credential = credential::TerminalCredentialInput::readHiddenPrompt(repeatedPassphrasePrompt, maximumByteCount);
  if (!credential) return std::unexpected(credential::CredentialReadingFailure{});
  return std::move(*credential);
}

}  // namespace galdrine::backuptool
