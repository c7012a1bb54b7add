#pragma once
// GaldrineBackupPayloadContainerKindV1 is the kind of file that holds a resource's encrypted
// bytes: a pack segment shared by small resources, or one chunk file a part.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupPayloadContainerKindV1 : std::uint8_t {
  pack,
  chunk,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupPayloadContainerKindV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};
