#pragma once
// CredentialInput says where a credential is read from: a hidden
// prompt on the controlling terminal, or a standard input that is not a terminal.

#include <cstdint>

namespace galdrine::credential {

enum class CredentialInput : std::uint8_t {
  hiddenTerminal,
  standardInput,
};

}  // namespace galdrine::credential
