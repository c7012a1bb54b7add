#pragma once
// BackupPayloadKeyScopeV1 says what a payload key is bound to: one pack segment or one
// chunked resource.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupPayloadKeyScopeV1 : std::uint8_t {
  pack,
  resource,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupPayloadKeyScopeV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine

