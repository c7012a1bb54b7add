#pragma once
// BackupManifestCompressionV1 is the compression of a manifest section's records.
// zstd is known to the format but reserved: no section that uses it is built or accepted.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupManifestCompressionV1 : std::uint8_t {
  none,
  zstd,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupManifestCompressionV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine
