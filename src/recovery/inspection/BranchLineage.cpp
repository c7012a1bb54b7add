#include "recovery/inspection/BranchLineage.hpp"

#include <set>

namespace galdrine::recovery {

std::expected<std::vector<RecoverySnapshotPreflight>, RecoveryPackageInspectorError> branchLineage(
    const Bytes& tipCommitIdentifier, const std::map<Bytes, AuthenticatedContent>& contents,
    const std::map<Bytes, RecoverySnapshotPreflight>& preflightsByCommit) {
  constexpr auto integrityFailure = RecoveryPackageInspectorError::integrityFailure;
  std::set<Bytes> visited;
  std::vector<RecoverySnapshotPreflight> lineage;
  Bytes current = tipCommitIdentifier;
  while (true) {
    if (!visited.insert(current).second) return std::unexpected(integrityFailure);
    const auto content = contents.find(current);
    const auto preflight = preflightsByCommit.find(current);
    if (content == contents.end() || preflight == preflightsByCommit.end()) return std::unexpected(integrityFailure);
    lineage.push_back(preflight->second);
    const auto& parent = content->second.authenticatedCommit.commit().parent();
    if (!parent) return lineage;
    current = parent->identifier();
  }
}

}  // namespace galdrine::recovery
