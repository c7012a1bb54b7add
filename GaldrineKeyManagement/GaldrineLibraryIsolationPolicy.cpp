#include "GaldrineKeyManagement/GaldrineLibraryIsolationPolicy.hpp"

namespace GaldrineLibraryIsolationPolicy {

std::expected<void, GaldrineLibraryIsolationError> validatePrimaryDecoyPair(const GaldrineLibraryKeyDomain& primary,
                                                                            const GaldrineLibraryKeyDomain& decoy) {
  if (primary.role == decoy.role) return std::unexpected(GaldrineLibraryIsolationError::duplicateRole);
  if (primary.identifier == decoy.identifier) {
    return std::unexpected(GaldrineLibraryIsolationError::reusedDomainIdentifier);
  }
  return {};
}

}  // namespace GaldrineLibraryIsolationPolicy
