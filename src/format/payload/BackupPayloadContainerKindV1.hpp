#pragma once
// BackupPayloadContainerKindV1 is the kind of file that holds a resource's encrypted
// bytes: a pack segment shared by small resources, or one chunk file a part.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupPayloadContainerKindV1 : std::uint8_t {
  pack,
  chunk,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupPayloadContainerKindV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine

