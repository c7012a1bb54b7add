#pragma once
// GaldrineLibraryRole: a device holds a primary library and may hold a decoy beside it.

#include <cstdint>

enum class GaldrineLibraryRole : std::uint8_t { primary, decoy };
