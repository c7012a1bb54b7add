#pragma once
// GaldrineRecoveryToolCredentialInputV1 says where a credential is read from: a hidden
// prompt on the controlling terminal, or a standard input that is not a terminal.

#include <cstdint>

enum class GaldrineRecoveryToolCredentialInputV1 : std::uint8_t {
  hiddenTerminal,
  standardInput,
};
