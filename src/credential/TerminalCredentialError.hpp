#pragma once
// TerminalCredentialError: why the terminal reader obtained no credential. The driver does
// not look at the case; both become one "could not be read securely" outcome.

#include <cstdint>

namespace galdrine::credential {

enum class TerminalCredentialError : std::uint8_t {
  unavailable,  // no credential could be obtained on this input
  tooLarge,     // standard input holds more bytes than allowed
};

}  // namespace galdrine::credential
