#pragma once
// GaldrinePortableKeyDerivationV1 is how a portable envelope turns its credential into the
// frame key. Each factor has exactly one derivation.

#include <array>
#include <cstdint>
#include <string_view>

#include "GaldrineCore/GaldrineBackupAlgorithmV1.hpp"
#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrinePortableKeyDerivationV1 : std::uint8_t {
  argon2idV13,
  hkdfSHA256,
};

template <>
struct GaldrineRawValueTable<GaldrinePortableKeyDerivationV1> {
  static constexpr std::array<std::string_view, 2> rawValues{rawValue(GaldrineBackupAlgorithmV1::passphraseKDF),
                                                             rawValue(GaldrineBackupAlgorithmV1::recoveryKDF)};
};
