#pragma once
// GaldrineBackupMediaLifecycleV1 says whether an item is live or in the trash.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupMediaLifecycleV1 : std::uint8_t {
  active,
  trash,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupMediaLifecycleV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};
