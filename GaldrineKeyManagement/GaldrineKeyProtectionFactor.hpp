#pragma once
// GaldrineKeyProtectionFactor: the credentials that may protect a root key.

#include <cstdint>

enum class GaldrineKeyProtectionFactor : std::uint8_t {
  localPassphrase,
  numericAppCodeWithDeviceBinding,
  biometricDeviceKey,
  backupPassphrase,
  recoveryKey,
};
