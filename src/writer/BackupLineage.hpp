#pragma once
// BackupLineage is where a new commit stands in a package's graph: its parent, the
// tips of other branches it acknowledges, its writer epoch and its generation. resolve works
// them out from the commits and heads a package holds and from the caller's request, by the
// rules a reader checks: a commit in its parent's epoch is the next generation and repeats the
// parent's acknowledged tips; one that acknowledges more takes an epoch above every epoch in
// the package, restarts at generation 1, and keeps its parent's tips.

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "writer/BackupCommitRequest.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

struct BackupLineage {
  std::optional<format::AuthenticatedBackupCommit> parent;
  std::vector<format::AuthenticatedBackupCommit> acknowledgedTips;  // ascending by identifier
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;

  // acknowledgedReferences gives the references the commit record carries, in order.
  [[nodiscard]] std::vector<format::BackupArtifactReferenceV1> acknowledgedReferences() const {
    std::vector<format::BackupArtifactReferenceV1> references;
    references.reserve(acknowledgedTips.size());
    for (const auto& tip : acknowledgedTips) references.push_back(tip.reference());
    return references;
  }

  // standsIn checks, before anything of the commit is written, that a commit `commitIdentifier`
  // with this lineage would stand in the graph of `commits` and `heads` as a reader judges it
  // (the commit graph's errors). Its snapshot and digests are stand-ins: the graph's rules do
  // not look at them.
  [[nodiscard]] std::expected<void, BackupWriterFailure> standsIn(
      std::span<const format::AuthenticatedBackupCommit> commits,
      std::span<const format::AuthenticatedBackupHead> heads, const format::BackupIdentifierV1& commitIdentifier) const;

  // resolve, in this order: the package's graph (the commit graph's errors); the parent, which
  // is the canonical tip (readOnlyFork on an unsettled fork, unless healing, which builds on
  // the first tip), none, or a named commit (unknownCommit); the acknowledged tips: named ones
  // must be commits of the package (unknownCommit), healing adds every retained tip but the
  // parent (nothingToHeal when there is no other), and a root acknowledges nothing
  // (invalidLineage); a generation that would overflow is invalidLineage.
  [[nodiscard]] static std::expected<BackupLineage, BackupWriterFailure> resolve(
      std::span<const format::AuthenticatedBackupCommit> commits,
      std::span<const format::AuthenticatedBackupHead> heads, const BackupCommitRequest& request);
};

}  // namespace galdrine::writer
