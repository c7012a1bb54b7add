#pragma once
// RecoveryToolBackendError is the live backend's own refusal: credential bytes that are no
// usable recovery key (not UTF-8, or words the mnemonic does not accept).

#include <cstdint>

namespace galdrine::recoverytool {

enum class RecoveryToolBackendError : std::uint8_t {
  invalidCredential,
};

}  // namespace galdrine::recoverytool
