#pragma once
// GaldrineBackupMediaSourceTypeV1 says how an item entered the vault.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupMediaSourceTypeV1 : std::uint8_t {
  photos,
  files,
  shareExtension,
  privateCamera,
  restore,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupMediaSourceTypeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};
