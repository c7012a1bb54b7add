#pragma once
// branchLineage walks one retained tip back to its root through the parents of authenticated
// commits and gives their preflights, tip first. The walk is iterative and remembers every
// commit it visited, so a cycle fails instead of looping.

#include <expected>
#include <map>
#include <vector>

#include "platform/Bytes.hpp"
#include "recovery/inspection/ContentAuthentication.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

// A commit visited twice, or one without a content or a preflight, is integrityFailure.
[[nodiscard]] std::expected<std::vector<RecoverySnapshotPreflight>, RecoveryPackageInspectorError> branchLineage(
    const Bytes& tipCommitIdentifier, const ByteMap<AuthenticatedContent>& contents,
    const ByteMap<RecoverySnapshotPreflight>& preflightsByCommit);

}  // namespace galdrine::recovery
