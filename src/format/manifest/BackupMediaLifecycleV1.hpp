#pragma once
// BackupMediaLifecycleV1 says whether an item is live or in the trash.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupMediaLifecycleV1 : std::uint8_t {
  active,
  trash,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaLifecycleV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine

