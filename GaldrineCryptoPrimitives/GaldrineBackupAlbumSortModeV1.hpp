#pragma once
// GaldrineBackupAlbumSortModeV1 is how an album orders its items.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupAlbumSortModeV1 : std::uint8_t {
  manual,
  displayDateAscending,
  displayDateDescending,
  importDateAscending,
  importDateDescending,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupAlbumSortModeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};
