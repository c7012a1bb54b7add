#pragma once
// GaldrineLibraryIsolationPolicy keeps a primary and a decoy library apart: they must differ in
// role and must not share a key domain, or one library's keys could open the other's data.

#include <expected>

#include "GaldrineKeyManagement/GaldrineLibraryIsolationError.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryKeyDomain.hpp"

namespace GaldrineLibraryIsolationPolicy {

// validatePrimaryDecoyPair checks the roles first (duplicateRole), then the domain
// identifiers (reusedDomainIdentifier).
[[nodiscard]] std::expected<void, GaldrineLibraryIsolationError> validatePrimaryDecoyPair(
    const GaldrineLibraryKeyDomain& primary, const GaldrineLibraryKeyDomain& decoy);

}  // namespace GaldrineLibraryIsolationPolicy
