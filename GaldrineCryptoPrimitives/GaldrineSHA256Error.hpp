#pragma once

#include <cstdint>

enum class GaldrineSHA256Error : std::uint8_t {
  invalidReadChunkByteCount,
};
