#pragma once
// GaldrineBackupMediaKindV1 is what a media item shows; a live photo is a still with its
// paired movie.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupMediaKindV1 : std::uint8_t {
  photo,
  video,
  livePhoto,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupMediaKindV1> {
  static constexpr std::array<std::uint64_t, 3> rawValues{0, 1, 2};
};
