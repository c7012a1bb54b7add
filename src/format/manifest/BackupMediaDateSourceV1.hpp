#pragma once
// BackupMediaDateSourceV1 says where an item's display date came from.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupMediaDateSourceV1 : std::uint8_t {
  photos,
  embedded,
  file,
  imported,
  camera,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaDateSourceV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

}  // namespace galdrine

