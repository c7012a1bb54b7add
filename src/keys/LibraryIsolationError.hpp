#pragma once

#include <cstdint>

namespace galdrine::keys {

enum class LibraryIsolationError : std::uint8_t { duplicateRole, reusedDomainIdentifier };

}  // namespace galdrine::keys
