#include "format/graph/BackupCommitGraphAccessState.hpp"

#include <algorithm>

namespace galdrine::format {

namespace {

using Reference = BackupArtifactReferenceV1;
using Tip = BackupCommitGraphTip;

bool identifierPrecedes(const Bytes& left, const Bytes& right) { return ByteOrder::precedes(left, right); }

// coversOthers: the tip acknowledges every other tip by identifier.
bool coversOthers(const Tip& tip, const std::vector<Tip>& tips) {
  const auto& acknowledged = tip.commit().acknowledgedAlternateTips();
  // Too short a list cannot name them all; this also keeps a crowd of tips linear.
  if (acknowledged.size() < tips.size() - 1) return false;
  return std::ranges::all_of(tips, [&](const Tip& other) {
    if (&other == &tip) return true;
    return std::ranges::binary_search(acknowledged, other.reference().identifier(), identifierPrecedes,
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

}  // namespace galdrine::format
