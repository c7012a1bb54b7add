#include "keys/LibraryIsolationPolicy.hpp"

namespace galdrine::keys {

namespace LibraryIsolationPolicy {

std::expected<void, LibraryIsolationError> validatePrimaryDecoyPair(const LibraryKeyDomain& primary,
                                                                    const LibraryKeyDomain& decoy) {
  if (primary.role == decoy.role) return std::unexpected(LibraryIsolationError::duplicateRole);
  if (primary.identifier == decoy.identifier) {
    return std::unexpected(LibraryIsolationError::reusedDomainIdentifier);
  }
  return {};
}

}  // namespace LibraryIsolationPolicy

}  // namespace galdrine::keys
