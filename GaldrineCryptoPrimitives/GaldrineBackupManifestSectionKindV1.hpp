#pragma once
// GaldrineBackupManifestSectionKindV1 is the kind of records a manifest section holds. The raw
// value is stored; the case order is the order of sections in a manifest.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupManifestSectionKindV1 : std::uint8_t {
  payloadKey,
  item,
  resource,
  folder,
  album,
  membership,
  tombstone,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupManifestSectionKindV1> {
  static constexpr std::array<std::uint64_t, 7> rawValues{0, 1, 2, 3, 4, 5, 6};
};
