#pragma once

#include <cstdint>

enum class GaldrineLibraryIsolationError : std::uint8_t { duplicateRole, reusedDomainIdentifier };
