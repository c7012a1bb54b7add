#pragma once
// BackupSourceIdentitiesError is why no identifier could be derived.

#include <cstdint>

namespace galdrine::backuptool {

enum class BackupSourceIdentitiesError : std::uint8_t {
  invalidKey,        // the package master key is not 32 bytes
  derivationFailed,  // the key derivation of the platform failed
};

}  // namespace galdrine::backuptool
