#pragma once
// BackupCommitRequest says where a new commit goes in the package's graph and what is
// written with it. By default it continues the canonical tip (or starts the package's first
// root), in the parent's writer epoch at the next generation, repeating the parent's
// acknowledged tips, and a head is published for it.
//
// Naming tips to acknowledge (or asking to heal, which acknowledges every retained tip but the
// parent) settles other branches: such a commit raises the writer epoch above every epoch in
// the package and restarts at generation 1, keeping the tips its parent acknowledged. A commit
// may also start a new epoch without acknowledging anything, as a writer taking over would.
// Fixed identifiers and a fixed time replace the drawn ones.

#include <cstdint>
#include <optional>
#include <vector>

#include "format/graph/BackupIdentifierV1.hpp"

namespace galdrine::writer {

struct BackupCommitParent {
  enum class Kind : std::uint8_t { canonicalTip, root, commit };
  Kind kind = Kind::canonicalTip;
  format::BackupIdentifierV1 commitIdentifier{};  // for Kind::commit only

  [[nodiscard]] static BackupCommitParent canonicalTip() { return {Kind::canonicalTip, {}}; }
  [[nodiscard]] static BackupCommitParent root() { return {Kind::root, {}}; }
  [[nodiscard]] static BackupCommitParent commit(const format::BackupIdentifierV1& identifier) {
    return {Kind::commit, identifier};
  }
};

struct BackupCommitRequest {
  BackupCommitParent parent{};
  bool healFork = false;
  std::vector<format::BackupIdentifierV1> acknowledgedTips{};
  bool startWriterEpoch = false;

  bool publishHead = true;
  bool writeConvenienceHead = false;

  std::optional<std::int64_t> createdAtUTCMilliseconds{};
  std::optional<format::BackupIdentifierV1> commitIdentifier{};
  std::optional<format::BackupIdentifierV1> snapshotIdentifier{};
  std::optional<format::BackupIdentifierV1> manifestIdentifier{};
  std::optional<format::BackupIdentifierV1> headIdentifier{};
};

}  // namespace galdrine::writer
