#pragma once

#include <cstdint>

enum class GaldrineSodiumRuntimeError : std::uint8_t {
  initializationFailed,
};
