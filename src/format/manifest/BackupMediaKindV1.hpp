#pragma once
// BackupMediaKindV1 is what a media item shows; a live photo is a still with its
// paired movie.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupMediaKindV1 : std::uint8_t {
  photo,
  video,
  livePhoto,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaKindV1> {
  static constexpr std::array<std::uint64_t, 3> rawValues{0, 1, 2};
};

}  // namespace galdrine

