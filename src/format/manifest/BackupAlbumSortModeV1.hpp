#pragma once
// BackupAlbumSortModeV1 is how an album orders its items.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupAlbumSortModeV1 : std::uint8_t {
  manual,
  displayDateAscending,
  displayDateDescending,
  importDateAscending,
  importDateDescending,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupAlbumSortModeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

}  // namespace galdrine

