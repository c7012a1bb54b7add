#pragma once
// HKDF-SHA-256 (extract and expand).

#include <cstddef>
#include <span>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

namespace HKDF {

// deriveSHA256 fills `output` with HKDF-SHA-256 of the input key material, salt and info.
// It returns false if the library fails; `output` is then zeroed.
[[nodiscard]] bool deriveSHA256(ByteView inputKeyMaterial, ByteView salt, ByteView info,
                                std::span<std::uint8_t> output);

}  // namespace HKDF

}  // namespace galdrine::platform
