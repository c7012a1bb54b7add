#include "kdf/SodiumRuntime.hpp"

#include <sodium.h>

namespace galdrine::kdf {

namespace SodiumRuntime {

std::expected<void, SodiumRuntimeError> initialize() {
  // 0 is a first start, 1 a repeated one; only a negative result is a failure.
  if (sodium_init() < 0) return std::unexpected(SodiumRuntimeError::initializationFailed);
  return {};
}

std::string_view versionString() { return sodium_version_string(); }

}  // namespace SodiumRuntime

}  // namespace galdrine::kdf
