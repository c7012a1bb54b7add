#pragma once
// GaldrineWrappedRootKey: the root keys that a credential may wrap.

#include <cstdint>

enum class GaldrineWrappedRootKey : std::uint8_t { libraryMaster, backupPackageMaster };
