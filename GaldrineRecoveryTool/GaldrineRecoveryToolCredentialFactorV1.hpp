#pragma once
// GaldrineRecoveryToolCredentialFactorV1 names the portable credential a run unlocks with.
// Its raw values are the words the documents print.

#include <array>
#include <cstdint>
#include <string_view>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineRecoveryToolCredentialFactorV1 : std::uint8_t {
  backupPassphrase,
  recoveryKey,
};

template <>
struct GaldrineRawValueTable<GaldrineRecoveryToolCredentialFactorV1> {
  static constexpr std::array<std::string_view, 2> rawValues{"backup-passphrase", "recovery-key"};
};
