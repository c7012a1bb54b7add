#pragma once
// GaldrineRecoveryPortableFactorV1 is the credential an inspection was unlocked with.

#include <cstdint>

enum class GaldrineRecoveryPortableFactorV1 : std::uint8_t {
  backupPassphrase,
  recoveryKey,
};
