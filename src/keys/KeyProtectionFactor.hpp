#pragma once
// KeyProtectionFactor: the credentials that may protect a root key.

#include <cstdint>

namespace galdrine::keys {

enum class KeyProtectionFactor : std::uint8_t {
  localPassphrase,
  numericAppCodeWithDeviceBinding,
  biometricDeviceKey,
  backupPassphrase,
  recoveryKey,
};

}  // namespace galdrine::keys
