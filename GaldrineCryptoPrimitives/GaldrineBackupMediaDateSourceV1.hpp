#pragma once
// GaldrineBackupMediaDateSourceV1 says where an item's display date came from.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupMediaDateSourceV1 : std::uint8_t {
  photos,
  embedded,
  file,
  imported,
  camera,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupMediaDateSourceV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};
