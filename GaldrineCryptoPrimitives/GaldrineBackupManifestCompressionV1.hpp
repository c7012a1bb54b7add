#pragma once
// GaldrineBackupManifestCompressionV1 is the compression of a manifest section's records.
// zstd is known to the format but reserved: no section that uses it is built or accepted.

#include <array>
#include <cstdint>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineBackupManifestCompressionV1 : std::uint8_t {
  none,
  zstd,
};

template <>
struct GaldrineRawValueTable<GaldrineBackupManifestCompressionV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};
