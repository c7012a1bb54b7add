#pragma once
// FixtureKind is the kind of one fixture of an index; its text is what the index stores, and
// the kind decides which verification the fixture goes through.

#include <array>
#include <cstdint>
#include <string_view>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class FixtureKind : std::uint8_t {
  productionGraphV1,
  productionGoldenV1,
  productionKeyEnvelopesV1,
  productionPayloadV1,
  prototypeHeaderV0,
};

template <>
struct GaldrineRawValueTable<FixtureKind> {
  static constexpr std::array<std::string_view, 5> rawValues{
      "production-graph-v1", "production-golden-v1", "production-key-envelopes-v1", "production-payload-v1",
      "prototype-header-v0",
  };
};
