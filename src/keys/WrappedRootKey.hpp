#pragma once
// WrappedRootKey: the root keys that a credential may wrap.

#include <cstdint>

namespace galdrine::keys {

enum class WrappedRootKey : std::uint8_t { libraryMaster, backupPackageMaster };

}  // namespace galdrine::keys
