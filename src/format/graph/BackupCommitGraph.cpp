#include "format/graph/BackupCommitGraph.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace galdrine::format {

namespace {

using Commit = AuthenticatedBackupCommit;
using Head = AuthenticatedBackupHead;
using Reference = BackupArtifactReferenceV1;
using Tip = BackupCommitGraphTip;
using Error = BackupCommitGraphError;
using Position = std::size_t;

bool identifierPrecedes(const Bytes& left, const Bytes& right) { return ByteOrder::precedes(left, right); }

// UniqueRecords keeps the first of each identifier, in input order, and finds it again by
// identifier. It points into the caller's records, which outlive the scan.
template <typename Record>
struct UniqueRecords {
  std::vector<const Record*> records;
  std::unordered_map<std::string_view, Position> positions;

  [[nodiscard]] std::optional<Position> find(const Bytes& identifier) const {
    const auto found = positions.find(ByteText::text(identifier));
    if (found == positions.end()) return std::nullopt;
    return found->second;
  }
  [[nodiscard]] const BackupCommitV1& commit(Position position) const { return records[position]->commit(); }
  [[nodiscard]] const Bytes& identifier(Position position) const { return records[position]->reference().identifier(); }
};

using CommitIndex = UniqueRecords<Commit>;

// indexByIdentifier drops a repeat that equals the first in every field and refuses any other.
template <typename Record>
std::expected<UniqueRecords<Record>, Error> indexByIdentifier(std::span<const Record> input) {
  UniqueRecords<Record> unique;
  unique.records.reserve(input.size());
  unique.positions.reserve(input.size());
  for (const Record& record : input) {
    const auto [found, inserted] =
        unique.positions.try_emplace(ByteText::text(record.reference().identifier()), unique.records.size());
    if (inserted) {
      unique.records.push_back(&record);
    } else if (!(*unique.records[found->second] == record)) {
      return std::unexpected(Error::duplicateIdentifier);
    }
  }
  return unique;
}

// isBound: the reference names a given commit and equals, in all five fields, the reference
// computed from that commit's frame.
bool isBound(const CommitIndex& index, const Reference& reference) {
  const auto position = index.find(reference.identifier());
  return position && index.records[*position]->reference() == reference;
}

std::expected<void, Error> validateReferences(const CommitIndex& index, const UniqueRecords<Head>& heads) {
  for (const Commit* record : index.records) {
    const auto& commit = record->commit();
    if (commit.parent() && !isBound(index, *commit.parent())) return std::unexpected(Error::missingReference);
    for (const Reference& tip : commit.acknowledgedAlternateTips()) {
      if (!isBound(index, tip)) return std::unexpected(Error::missingReference);
    }
  }
  for (const Head* head : heads.records) {
    if (!isBound(index, head->head().commit())) return std::unexpected(Error::missingReference);
  }
  return {};
}

// Ancestry indexes the parent trees by position in the commit index. Entry and exit orders
// come from one depth-first walk, so an ancestor test takes constant time.
struct Ancestry {
  std::vector<std::optional<Position>> parents;
  std::vector<std::vector<Position>> children;  // each ascending by identifier
  std::vector<std::uint64_t> depths;
  std::vector<std::uint64_t> entryOrder;
  std::vector<std::uint64_t> exitOrder;

  [[nodiscard]] bool isProperAncestor(Position ancestor, Position descendant) const {
    return ancestor != descendant && entryOrder[ancestor] < entryOrder[descendant] &&
           exitOrder[descendant] < exitOrder[ancestor];
  }
};

enum class Visit : std::uint8_t { unseen, active, finished };

struct WalkEntry {
  Position commit;
  std::uint64_t depth;
  bool leaving;
};

// walk visits the trees under `roots` depth first with an explicit stack: a chain of any
// length needs no call stack. A commit met twice, or one never met (a ring has no root),
// is cyclicGraph.
std::expected<void, Error> walk(Ancestry& ancestry, const std::vector<Position>& roots) {
  const std::size_t commitCount = ancestry.parents.size();
  std::vector<Visit> visits(commitCount, Visit::unseen);
  std::vector<WalkEntry> stack;
  std::uint64_t counter = 0;
  std::size_t finishedCount = 0;
  for (const Position root : roots) {
    stack.push_back({root, 0, false});
    while (!stack.empty()) {
      const WalkEntry entry = stack.back();
      stack.pop_back();
      if (entry.leaving) {
        visits[entry.commit] = Visit::finished;
        ++finishedCount;
        ancestry.exitOrder[entry.commit] = counter++;
        continue;
      }
      if (visits[entry.commit] != Visit::unseen) return std::unexpected(Error::cyclicGraph);
      visits[entry.commit] = Visit::active;
      ancestry.depths[entry.commit] = entry.depth;
      ancestry.entryOrder[entry.commit] = counter++;
      stack.push_back({entry.commit, entry.depth, true});
      const auto& children = ancestry.children[entry.commit];
      // Reversed, so that the lowest identifier is taken first.
      for (auto child = children.rbegin(); child != children.rend(); ++child) {
        stack.push_back({*child, entry.depth + 1, false});
      }
    }
  }
  if (finishedCount != commitCount) return std::unexpected(Error::cyclicGraph);
  return {};
}

std::expected<Ancestry, Error> buildAncestry(const CommitIndex& index) {
  const std::size_t commitCount = index.records.size();
  Ancestry ancestry{std::vector<std::optional<Position>>(commitCount), std::vector<std::vector<Position>>(commitCount),
                    std::vector<std::uint64_t>(commitCount), std::vector<std::uint64_t>(commitCount),
                    std::vector<std::uint64_t>(commitCount)};
  std::vector<Position> roots;
  for (Position position = 0; position < commitCount; ++position) {
    const auto& parent = index.commit(position).parent();
    if (!parent) {
      roots.push_back(position);
      continue;
    }
    const auto parentPosition = index.find(parent->identifier());
    if (!parentPosition) return std::unexpected(Error::missingReference);
    ancestry.parents[position] = *parentPosition;
    ancestry.children[*parentPosition].push_back(position);
  }
  const auto byIdentifier = [&](Position left, Position right) {
    return identifierPrecedes(index.identifier(left), index.identifier(right));
  };
  std::ranges::sort(roots, byIdentifier);
  for (auto& children : ancestry.children) std::ranges::sort(children, byIdentifier);
  const auto walked = walk(ancestry, roots);
  if (!walked) return std::unexpected(walked.error());
  return ancestry;
}

// acknowledgesAllOf: every reference in `required` has its identifier among `acknowledged`,
// both being strictly ascending by identifier.
bool acknowledgesAllOf(const std::vector<Reference>& acknowledged, const std::vector<Reference>& required) {
  const auto identifierOf = [](const Reference& reference) -> const Bytes& { return reference.identifier(); };
  return std::ranges::includes(acknowledged, required, identifierPrecedes, identifierOf, identifierOf);
}

std::expected<void, Error> validateEpochStep(const CommitIndex& index, const BackupCommitV1& commit,
                                             const BackupCommitV1& parent) {
  constexpr auto invalid = Error::invalidLineage;
  if (commit.writerEpoch() == parent.writerEpoch()) {
    // Within one epoch generations count up by one and the acknowledged tips carry over.
    if (parent.generation() == std::numeric_limits<std::uint64_t>::max() ||
        commit.generation() != parent.generation() + 1 ||
        commit.acknowledgedAlternateTips() != parent.acknowledgedAlternateTips()) {
      return std::unexpected(invalid);
    }
    return {};
  }
  // A new epoch: a writer takes over on top of older epochs and restarts at generation 1.
  if (commit.writerEpoch() < parent.writerEpoch() || commit.generation() != 1) return std::unexpected(invalid);
  if (!acknowledgesAllOf(commit.acknowledgedAlternateTips(), parent.acknowledgedAlternateTips())) {
    return std::unexpected(invalid);
  }
  for (const Reference& tip : commit.acknowledgedAlternateTips()) {
    const auto tipPosition = index.find(tip.identifier());
    if (!tipPosition || index.commit(*tipPosition).writerEpoch() >= commit.writerEpoch())
      return std::unexpected(invalid);
  }
  return {};
}

std::expected<void, Error> validateLineage(const CommitIndex& index, const Ancestry& ancestry, Position position) {
  const auto& commit = index.commit(position);
  if (!commit.parent()) {
    if (commit.generation() != 0 || !commit.acknowledgedAlternateTips().empty()) {
      return std::unexpected(Error::invalidLineage);
    }
    return {};
  }
  const auto parentPosition = index.find(commit.parent()->identifier());
  if (!parentPosition) return std::unexpected(Error::missingReference);
  const auto step = validateEpochStep(index, commit, index.commit(*parentPosition));
  if (!step) return std::unexpected(step.error());
  // Acknowledged tips lie on other branches than the commit's own.
  for (const Reference& tip : commit.acknowledgedAlternateTips()) {
    const auto tipPosition = index.find(tip.identifier());
    if (!tipPosition) return std::unexpected(Error::missingReference);
    if (*tipPosition == *parentPosition || ancestry.isProperAncestor(*tipPosition, *parentPosition) ||
        ancestry.isProperAncestor(*parentPosition, *tipPosition)) {
      return std::unexpected(Error::invalidLineage);
    }
  }
  return {};
}

// maximalPositions gives the members of `selected` that no other member descends from.
// Deeper commits are taken first, so each child is settled before its parent.
std::vector<Position> maximalPositions(const Ancestry& ancestry, const std::vector<bool>& selected) {
  std::vector<Position> byDescendingDepth(ancestry.depths.size());
  for (Position position = 0; position < byDescendingDepth.size(); ++position) byDescendingDepth[position] = position;
  std::ranges::stable_sort(
      byDescendingDepth, [&](Position left, Position right) { return ancestry.depths[left] > ancestry.depths[right]; });
  std::vector<bool> reachesSelected(ancestry.depths.size(), false);
  std::vector<Position> maximal;
  for (const Position position : byDescendingDepth) {
    const auto& children = ancestry.children[position];
    const bool childReaches = std::ranges::any_of(children, [&](Position child) { return reachesSelected[child]; });
    reachesSelected[position] = selected[position] || childReaches;
    if (selected[position] && !childReaches) maximal.push_back(position);
  }
  return maximal;
}

std::vector<Tip> sortedTips(const CommitIndex& index, const Ancestry& ancestry, const UniqueRecords<Head>& heads) {
  std::vector<bool> reachedByHead(index.records.size(), false);
  for (const Head* head : heads.records) reachedByHead[*index.find(head->head().commit().identifier())] = true;
  std::vector<Tip> tips;
  for (const Position position : maximalPositions(ancestry, reachedByHead)) tips.emplace_back(*index.records[position]);
  std::ranges::sort(tips, [](const Tip& left, const Tip& right) {
    return identifierPrecedes(left.reference().identifier(), right.reference().identifier());
  });
  return tips;
}

// coversOthers: the tip acknowledges every other tip by identifier.
bool coversOthers(const Tip& tip, const std::vector<Tip>& tips) {
  const auto& acknowledged = tip.commit().acknowledgedAlternateTips();
  // Too short a list cannot name them all; this also keeps a crowd of tips linear.
  if (acknowledged.size() < tips.size() - 1) return false;
  return std::ranges::all_of(tips, [&](const Tip& other) {
    if (&other == &tip) return true;
    return std::ranges::binary_search(
        acknowledged, other.reference().identifier(), identifierPrecedes,
        [](const Reference& reference) -> const Bytes& { return reference.identifier(); });
  });
}

}  // namespace

BackupCommitGraphAccessState BackupCommitGraphAccessState::decide(const std::vector<Tip>& tips) {
  using AccessState = BackupCommitGraphAccessState;
  if (tips.empty()) return AccessState::writable(std::nullopt);
  if (tips.size() == 1) return AccessState::writable(tips.front());
  std::vector<const Tip*> settling;
  for (const Tip& tip : tips) {
    if (coversOthers(tip, tips)) settling.push_back(&tip);
  }
  if (settling.size() == 1) return AccessState::writable(*settling.front());
  return AccessState::readOnlyFork(tips);
}

namespace BackupCommitGraph {

std::expected<BackupCommitGraphScan, BackupCommitGraphError> scan(std::span<const AuthenticatedBackupCommit> commits,
                                                                  std::span<const AuthenticatedBackupHead> heads) {
  if (commits.size() > maximumCommitCount || heads.size() > maximumHeadCount) {
    return std::unexpected(Error::recordLimitExceeded);
  }
  const auto commitIndex = indexByIdentifier(commits);
  if (!commitIndex) return std::unexpected(commitIndex.error());
  const auto headIndex = indexByIdentifier(heads);
  if (!headIndex) return std::unexpected(headIndex.error());
  const auto references = validateReferences(*commitIndex, *headIndex);
  if (!references) return std::unexpected(references.error());
  const auto ancestry = buildAncestry(*commitIndex);
  if (!ancestry) return std::unexpected(ancestry.error());
  for (Position position = 0; position < commitIndex->records.size(); ++position) {
    const auto lineage = validateLineage(*commitIndex, *ancestry, position);
    if (!lineage) return std::unexpected(lineage.error());
  }

  BackupCommitGraphScan result;
  result.retainedTips = sortedTips(*commitIndex, *ancestry, *headIndex);
  for (Position position = 0; position < commitIndex->records.size(); ++position) {
    result.maximumWriterEpoch = std::max(result.maximumWriterEpoch, commitIndex->commit(position).writerEpoch());
    result.validCommitIdentifiers.insert(commitIndex->identifier(position));
  }
  result.accessState = BackupCommitGraphAccessState::decide(result.retainedTips);
  return result;
}

}  // namespace BackupCommitGraph

}  // namespace galdrine::format
