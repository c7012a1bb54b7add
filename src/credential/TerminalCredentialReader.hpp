#pragma once
// TerminalCredentialReader is the only way a secret enters the process: a hidden prompt on
// the controlling terminal, or the bytes of a standard input that is not a terminal. It
// takes the credential byte for byte (no normalisation, no trimming beyond one final line
// ending of redirected input), never prints it, and leaves no copy in its own buffers on any
// way out. The result belongs to the caller, who wipes it.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string_view>

#include "credential/CredentialReading.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::credential {

// TerminalCredentialError: why the terminal reader obtained no credential. The tools do not
// look at the case; both become one "could not be read securely" outcome.
enum class TerminalCredentialError : std::uint8_t {
  unavailable,  // no credential could be obtained on this input
  tooLarge,     // standard input holds more bytes than allowed
};

class TerminalCredentialReader final : public CredentialReading {
 public:
  // read takes the factor's hidden prompt for hiddenTerminal and descriptor 0 for standardInput.
  [[nodiscard]] std::expected<Bytes, CredentialReadingFailure> read(envelope::PortableKeyFactorV1 factor,
                                                                    CredentialInput input,
                                                                    std::int64_t maximumByteCount) override;
};

namespace TerminalCredentialInput {

inline constexpr std::size_t redirectedChunkByteCount = 4096;

// prompt is the text shown before the hidden entry; it ends with one blank and no line break.
[[nodiscard]] std::string_view prompt(envelope::PortableKeyFactorV1 factor);

// readHiddenPrompt shows `promptText` and reads one line from the controlling terminal with
// echo off. A line longer than maximumByteCount is cut to that length. No controlling
// terminal, an interrupted entry or an empty line fail with unavailable. A tool that asks for
// a new passphrase a second time reads it here with a text of its own.
[[nodiscard]] std::expected<Bytes, TerminalCredentialError> readHiddenPrompt(std::string_view promptText,
                                                                             std::int64_t maximumByteCount);

// readRedirected reads `descriptor` to its end in chunks of at most 4096 bytes. A terminal
// fails with unavailable (it never falls back to a prompt), a failed read with unavailable,
// and more than maximumByteCount bytes, counted before the line ending is removed, with
// tooLarge. One final "\n" or "\r\n" is removed; an empty result is no failure here.
[[nodiscard]] std::expected<Bytes, TerminalCredentialError> readRedirected(int descriptor,
                                                                           std::int64_t maximumByteCount);

}  // namespace TerminalCredentialInput

}  // namespace galdrine::credential
