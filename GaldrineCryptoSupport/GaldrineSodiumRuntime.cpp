#include "GaldrineCryptoSupport/GaldrineSodiumRuntime.hpp"

#include <sodium.h>

namespace GaldrineSodiumRuntime {

std::expected<void, GaldrineSodiumRuntimeError> initialize() {
  // 0 is a first start, 1 a repeated one; only a negative result is a failure.
  if (sodium_init() < 0) return std::unexpected(GaldrineSodiumRuntimeError::initializationFailed);
  return {};
}

std::string_view versionString() { return sodium_version_string(); }

}  // namespace GaldrineSodiumRuntime
