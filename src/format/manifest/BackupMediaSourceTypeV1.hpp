#pragma once
// BackupMediaSourceTypeV1 says how an item entered the vault.

#include <array>
#include <cstdint>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupMediaSourceTypeV1 : std::uint8_t {
  photos,
  files,
  shareExtension,
  privateCamera,
  restore,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaSourceTypeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

}  // namespace galdrine

