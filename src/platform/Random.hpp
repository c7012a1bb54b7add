#pragma once
// Bytes from the system's secure random source, and random UUID text.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace galdrine::platform {

namespace Random {

// fill writes random bytes over all of `bytes`. It gives 0 on success and a non-zero status
// when the source failed, in which case `bytes` is zeroed.
[[nodiscard]] std::int32_t fill(std::span<std::uint8_t> bytes);

// lowercaseUUIDText gives a fresh random (version 4) UUID in its 36-character lower-case
// text form, or nothing when the random source failed.
[[nodiscard]] std::optional<std::string> lowercaseUUIDText();

}  // namespace Random

}  // namespace galdrine::platform
