#pragma once
// GaldrineBackupMediaResourceRoleV1 is the part a resource plays for its item.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupMediaResourceRoleV1 : std::uint8_t {
  primary,
  pairedVideo,
  original,
  rendered,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupMediaResourceRoleV1> {
  static constexpr std::array<std::uint64_t, 4> rawValues{0, 1, 2, 3};
};
