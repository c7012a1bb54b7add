#pragma once
// GraphArtifactDiscovery finds and opens every commit and every head a package holds. No
// reference names them yet, so each is found by listing its directory, read under the fixed
// frame ceiling, and opened under the bpmk with the identifier its canonical name spells. A
// stray name or a frame that does not open fails the whole discovery: nothing is skipped.

#include <expected>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "recovery/inspection/ContentAuthentication.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

namespace GraphArtifactDiscovery {

// discoverCommits and discoverHeads give the artifacts of "commits" and "heads", ascending by
// identifier; an empty directory gives none. Listing faults are those of
// RecoveryArtifactFiles::artifactIdentifiers, reading faults those of readRegularFile, and
// anything else integrityFailure.
[[nodiscard]] std::expected<std::vector<format::AuthenticatedBackupCommit>, RecoveryPackageInspectorError>
discoverCommits(const AuthenticationScope& scope);
[[nodiscard]] std::expected<std::vector<format::AuthenticatedBackupHead>, RecoveryPackageInspectorError> discoverHeads(
    const AuthenticationScope& scope);

}  // namespace GraphArtifactDiscovery

}  // namespace galdrine::recovery
