#pragma once

#include <cstdint>

namespace galdrine::kdf {

enum class SodiumRuntimeError : std::uint8_t {
  initializationFailed,
};

}  // namespace galdrine::kdf
