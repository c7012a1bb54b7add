#include "GaldrineRecoveryCore/BranchLineage.hpp"

#include <set>

std::expected<std::vector<GaldrineRecoverySnapshotPreflightV1>, GaldrineRecoveryPackageInspectorV1Error> branchLineage(
    const Bytes& tipCommitIdentifier, const std::map<Bytes, AuthenticatedContent>& contents,
    const std::map<Bytes, GaldrineRecoverySnapshotPreflightV1>& preflightsByCommit) {
  constexpr auto integrityFailure = GaldrineRecoveryPackageInspectorV1Error::integrityFailure;
  std::set<Bytes> visited;
  std::vector<GaldrineRecoverySnapshotPreflightV1> lineage;
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
