#pragma once
// GaldrineRecoveryToolCredentialFactorV1 names the portable credential a run unlocks with.
// Its raw values are the words the documents print.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

enum class GaldrineRecoveryToolCredentialFactorV1 : std::uint8_t {
  backupPassphrase,
  recoveryKey,
};

[[nodiscard]] constexpr std::string_view rawValue(GaldrineRecoveryToolCredentialFactorV1 factor) {
  switch (factor) {
    case GaldrineRecoveryToolCredentialFactorV1::backupPassphrase: return "backup-passphrase";
    case GaldrineRecoveryToolCredentialFactorV1::recoveryKey: return "recovery-key";
  }
  return {};
}

[[nodiscard]] constexpr std::optional<GaldrineRecoveryToolCredentialFactorV1> fromRawValue(std::string_view raw) {
  constexpr std::array allFactors{GaldrineRecoveryToolCredentialFactorV1::backupPassphrase,
                                  GaldrineRecoveryToolCredentialFactorV1::recoveryKey};
  for (const auto factor : allFactors) {
    if (rawValue(factor) == raw) return factor;
  }
  return std::nullopt;
}
