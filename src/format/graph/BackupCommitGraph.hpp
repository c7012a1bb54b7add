#pragma once
// BackupCommitGraph decides what a package's authenticated commits and heads add up
// to: which commits are tips, and whether one tip is canonical (the package may be written)
// or the tips form an unsettled fork (it may only be read). The decision depends only on the
// records' content: no clock, no file order, no device identity.

#include <cstddef>
#include <expected>
#include <span>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupCommitGraphScan.hpp"
#include "format/graph/BackupCommitGraphError.hpp"

namespace galdrine::format {

namespace BackupCommitGraph {

inline constexpr std::size_t maximumCommitCount = 20'000;
inline constexpr std::size_t maximumHeadCount = 20'000;

// scan checks, in this order: at most 20,000 commits and 20,000 heads (recordLimitExceeded);
// commits, then heads, indexed by reference identifier, where a repeat that equals the first
// in every field is dropped and any other repeat is duplicateIdentifier; every parent,
// acknowledged tip and head reference names a given commit and equals its authenticated
// reference in all five fields (missingReference); the parent links form trees
// (cyclicGraph); every commit's lineage is sound (invalidLineage). The tips are the commits
// reached by heads that no other reached commit descends from. One tip, or exactly one tip
// that acknowledges all the others, makes the package writable; two or more that nobody or
// more than one settles make a read-only fork. A failure rejects the whole input and nothing
// of it is returned. The walk is iterative, so memory, not stack, grows with the chain.
[[nodiscard]] std::expected<BackupCommitGraphScan, BackupCommitGraphError> scan(
    std::span<const AuthenticatedBackupCommit> commits, std::span<const AuthenticatedBackupHead> heads);

}  // namespace BackupCommitGraph

}  // namespace galdrine::format
