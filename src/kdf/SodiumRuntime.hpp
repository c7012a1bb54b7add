#pragma once
// SodiumRuntime starts the library that derives passphrase keys and says which version
// of it this process runs.

#include <cstdint>
#include <expected>
#include <string_view>

namespace galdrine::kdf {

enum class SodiumRuntimeError : std::uint8_t {
  initializationFailed,
};

namespace SodiumRuntime {

// initialize prepares the library; calling it again is harmless and succeeds. It fails with
// initializationFailed only when the library cannot start (no usable random source).
[[nodiscard]] std::expected<void, SodiumRuntimeError> initialize();

// versionString is the library's own version text, such as "1.0.18".
[[nodiscard]] std::string_view versionString();

}  // namespace SodiumRuntime

}  // namespace galdrine::kdf
