#pragma once
// BackupCommitRequest says where a new commit goes in the package's graph. By default it
// continues the canonical tip (or starts the package's first root), in the parent's writer
// epoch at the next generation, repeating the parent's acknowledged tips, and a head is
// published for it.
//
// Naming tips to acknowledge (or asking to heal, which acknowledges every retained tip but the
// parent) settles other branches: such a commit raises the writer epoch above every epoch in
// the package and restarts at generation 1, keeping the tips its parent acknowledged.

#include <cstdint>
#include <vector>

#include "format/graph/BackupIdentifierV1.hpp"

namespace galdrine::writer {

struct BackupCommitParent {
  enum class Kind : std::uint8_t { canonicalTip, root, commit };
  Kind kind = Kind::canonicalTip;
  format::BackupIdentifierV1 commitIdentifier{};  // for Kind::commit only

  [[nodiscard]] static BackupCommitParent root() { return {Kind::root, {}}; }
  [[nodiscard]] static BackupCommitParent commit(const format::BackupIdentifierV1& identifier) {
    return {Kind::commit, identifier};
  }
};

struct BackupCommitRequest {
  BackupCommitParent parent{};
  bool healFork = false;
  std::vector<format::BackupIdentifierV1> acknowledgedTips{};
  bool publishHead = true;
};

}  // namespace galdrine::writer
