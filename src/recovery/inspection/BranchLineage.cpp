#include "recovery/inspection/BranchLineage.hpp"

#include <set>

namespace galdrine::recovery {

std::expected<std::vector<RecoverySnapshotPreflight>, RecoveryPackageInspectorError> branchLineage(
    const Bytes& tipCommitIdentifier, const ByteMap<AuthenticatedContent>& contents,
    const ByteMap<RecoverySnapshotPreflight>& preflightsByCommit) {
  constexpr auto integrityFailure = RecoveryPackageInspectorError::integrityFailure;
  ByteSet visited;
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
