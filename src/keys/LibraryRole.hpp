#pragma once
// LibraryRole: a device holds a primary library and may hold a decoy beside it.

#include <cstdint>

namespace galdrine::keys {

enum class LibraryRole : std::uint8_t { primary, decoy };

}  // namespace galdrine::keys
