#pragma once
// BackupManifestSectionKindV1 is the kind of records a manifest section holds. The raw
// value is stored; the case order is the order of sections in a manifest.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupManifestSectionKindV1 : std::uint8_t {
  payloadKey,
  item,
  resource,
  folder,
  album,
  membership,
  tombstone,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupManifestSectionKindV1> {
  static constexpr std::array<std::uint64_t, 7> rawValues{0, 1, 2, 3, 4, 5, 6};
};

}  // namespace galdrine
