#pragma once

#include <cstdint>

namespace galdrine::platform {

enum class SHA256FileError : std::uint8_t {
  invalidReadChunkByteCount,
};

}  // namespace galdrine::platform
