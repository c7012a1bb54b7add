#pragma once
// GaldrineBackupPayloadKeyScopeV1 says what a payload key is bound to: one pack segment or one
// chunked resource.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupPayloadKeyScopeV1 : std::uint8_t {
  pack,
  resource,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupPayloadKeyScopeV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};
