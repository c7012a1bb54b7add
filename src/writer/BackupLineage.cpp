#include "writer/BackupLineage.hpp"

#include <algorithm>
#include <limits>

#include "format/graph/BackupCommitGraph.hpp"

namespace galdrine::writer {

namespace {

using Commit = format::AuthenticatedBackupCommit;
using Error = BackupWriterError;
using Failure = BackupWriterFailure;

[[nodiscard]] const Commit* find(std::span<const Commit> commits, ByteView identifier) {
  const auto found = std::ranges::find_if(
      commits, [&](const Commit& commit) { return ByteOrder::equal(commit.reference().identifier(), identifier); });
  return found == commits.end() ? nullptr : &*found;
}

[[nodiscard]] std::expected<std::optional<Commit>, Failure> resolveParent(std::span<const Commit> commits,
                                                                          const format::BackupCommitGraphScan& scan,
                                                                          const BackupCommitRequest& request) {
  using Kind = BackupCommitParent::Kind;
  switch (request.parent.kind) {
    case Kind::root:
      return std::optional<Commit>();
    case Kind::commit: {
      const Commit* parent = find(commits, request.parent.commitIdentifier);
      if (parent == nullptr) return backupWriterFailure(Error::unknownCommit);
      return std::optional<Commit>(*parent);
    }
    case Kind::canonicalTip: {
      const auto* writable = scan.accessState.asWritable();
      if (writable == nullptr && !request.healFork) return backupWriterFailure(Error::readOnlyFork);
      const auto& tip = writable != nullptr ? writable->canonicalTip : std::optional(scan.retainedTips.front());
      if (!tip) return std::optional<Commit>();
      return std::optional<Commit>(*find(commits, tip->reference().identifier()));
    }
  }
  std::unreachable();
}

// gatheredTips gathers the parent's tips, the named ones and, when healing, every retained
// tip but the parent, each once, ascending.
[[nodiscard]] std::expected<std::vector<Commit>, Failure> gatheredTips(std::span<const Commit> commits,
                                                                       const format::BackupCommitGraphScan& scan,
                                                                       const std::optional<Commit>& parent,
                                                                       const BackupCommitRequest& request) {
  std::vector<Bytes> identifiers;
  if (parent) {
    for (const auto& tip : parent->commit().acknowledgedAlternateTips()) identifiers.push_back(tip.identifier());
  }
  for (const auto& named : request.acknowledgedTips) identifiers.emplace_back(named.begin(), named.end());
  if (request.healFork) {
    std::size_t others = 0;
    for (const auto& tip : scan.retainedTips) {
      if (parent && tip.reference().identifier() == parent->reference().identifier()) continue;
      identifiers.push_back(tip.reference().identifier());
      ++others;
    }
    if (others == 0) return backupWriterFailure(Error::nothingToHeal);
  }
  std::ranges::sort(identifiers, ByteOrder::precedes);
  const auto repeated = std::ranges::unique(identifiers);
  identifiers.erase(repeated.begin(), repeated.end());
  std::vector<Commit> tips;
  tips.reserve(identifiers.size());
  for (const Bytes& identifier : identifiers) {
    const Commit* tip = find(commits, identifier);
    if (tip == nullptr) return backupWriterFailure(Error::unknownCommit);
    tips.push_back(*tip);
  }
  return tips;
}

}  // namespace

std::expected<BackupLineage, Failure> BackupLineage::resolve(std::span<const Commit> commits,
                                                             std::span<const format::AuthenticatedBackupHead> heads,
                                                             const BackupCommitRequest& request) {
  const auto scan = format::BackupCommitGraph::scan(commits, heads);
  if (!scan) return backupWriterFailure(scan.error());
  auto parent = resolveParent(commits, *scan, request);
  if (!parent) return std::unexpected(parent.error());
  auto tips = gatheredTips(commits, *scan, *parent, request);
  if (!tips) return std::unexpected(tips.error());

  BackupLineage lineage{std::move(*parent), std::move(*tips), 0, 0};
  if (!lineage.parent) {
    if (!lineage.acknowledgedTips.empty()) return backupWriterFailure(Error::invalidLineage);
    lineage.writerEpoch = std::max<std::uint64_t>(scan->maximumWriterEpoch, 1);
    return lineage;
  }
  const format::BackupCommitV1& parentCommit = lineage.parent->commit();
  const bool sameTips = std::ranges::equal(lineage.acknowledgedReferences(), parentCommit.acknowledgedAlternateTips());
  if (sameTips) {
    if (parentCommit.generation() == std::numeric_limits<std::uint64_t>::max())
      return backupWriterFailure(Error::invalidLineage);
    lineage.writerEpoch = parentCommit.writerEpoch();
    lineage.generation = parentCommit.generation() + 1;
  } else {
    lineage.writerEpoch = scan->maximumWriterEpoch + 1;
    lineage.generation = 1;
  }
  return lineage;
}

std::expected<void, Failure> BackupLineage::standsIn(std::span<const Commit> commits,
                                                     std::span<const format::AuthenticatedBackupHead> heads,
                                                     const format::BackupIdentifierV1& commitIdentifier) const {
  const Bytes identifier(commitIdentifier.begin(), commitIdentifier.end());
  const Bytes standInDigest(32, 0);
  const Bytes standInIdentifier(16, 0);
  std::optional<format::BackupArtifactReferenceV1> parentReference;
  if (parent) parentReference = parent->reference();
  const auto reference = format::BackupArtifactReferenceV1::make(identifier, 1, standInDigest, 1, standInDigest);
  const auto snapshot = format::BackupArtifactReferenceV1::make(standInIdentifier, 1, standInDigest, 1, standInDigest);
  if (!reference || !snapshot) return backupWriterFailure(reference ? snapshot.error() : reference.error());
  const auto commit = format::BackupCommitV1::make(identifier, standInIdentifier, parentReference, *snapshot,
                                                   standInIdentifier, standInIdentifier, writerEpoch, generation, 0,
                                                   standInDigest, acknowledgedReferences());
  if (!commit) return backupWriterFailure(commit.error());
  auto authenticated = Commit::make(*reference, *commit);
  if (!authenticated) return backupWriterFailure(authenticated.error());
  std::vector<Commit> extended(commits.begin(), commits.end());
  extended.push_back(std::move(*authenticated));
  if (const auto scan = format::BackupCommitGraph::scan(extended, heads); !scan)
    return backupWriterFailure(scan.error());
  return {};
}

}  // namespace galdrine::writer
