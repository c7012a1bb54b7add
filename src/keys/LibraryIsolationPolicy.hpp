#pragma once
// LibraryIsolationPolicy keeps a primary and a decoy library apart: they must differ in
// role and must not share a key domain, or one library's keys could open the other's data.

#include <cstdint>
#include <expected>

#include "keys/LibraryKeyDomain.hpp"

namespace galdrine::keys {

enum class LibraryIsolationError : std::uint8_t { duplicateRole, reusedDomainIdentifier };

namespace LibraryIsolationPolicy {

// validatePrimaryDecoyPair checks the roles first (duplicateRole), then the domain
// identifiers (reusedDomainIdentifier).
[[nodiscard]] std::expected<void, LibraryIsolationError> validatePrimaryDecoyPair(const LibraryKeyDomain& primary,
                                                                                  const LibraryKeyDomain& decoy);

}  // namespace LibraryIsolationPolicy

}  // namespace galdrine::keys
