#pragma once
// BackupMediaResourceRoleV1 is the part a resource plays for its item.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupMediaResourceRoleV1 : std::uint8_t {
  primary,
  pairedVideo,
  original,
  rendered,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaResourceRoleV1> {
  static constexpr std::array<std::uint64_t, 4> rawValues{0, 1, 2, 3};
};

}  // namespace galdrine

