#pragma once
// BackupCommitGraph decides what a package's authenticated commits and heads add up
// to: which commits are tips, and whether one tip is canonical (the package may be written)
// or the tips form an unsettled fork (it may only be read). The decision depends only on the
// records' content: no clock, no file order, no device identity.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <set>
#include <span>
#include <variant>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupCommitGraphError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// BackupCommitGraphTip is a commit that a head reaches and that no other reached commit
// descends from, with the reference it was authenticated by.
class BackupCommitGraphTip {
 public:
  explicit BackupCommitGraphTip(const AuthenticatedBackupCommit& authenticated)
      : reference_(authenticated.reference()), commit_(authenticated.commit()) {}

  [[nodiscard]] const BackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const BackupCommitV1& commit() const { return commit_; }

  friend bool operator==(const BackupCommitGraphTip&, const BackupCommitGraphTip&) = default;

 private:
  BackupArtifactReferenceV1 reference_;
  BackupCommitV1 commit_;
};

// BackupCommitGraphAccessState says whether a package may be written to: writable with one
// canonical tip (none when there are no tips at all), or a read-only fork between tips that no
// single tip settles.
struct BackupCommitGraphAccessState {
  struct Writable {
    std::optional<BackupCommitGraphTip> canonicalTip;
    friend bool operator==(const Writable&, const Writable&) = default;
  };
  struct ReadOnlyFork {
    std::vector<BackupCommitGraphTip> tips;  // ascending by identifier
    friend bool operator==(const ReadOnlyFork&, const ReadOnlyFork&) = default;
  };

  std::variant<Writable, ReadOnlyFork> state;

  static BackupCommitGraphAccessState writable(std::optional<BackupCommitGraphTip> canonicalTip) {
    return {Writable{std::move(canonicalTip)}};
  }
  static BackupCommitGraphAccessState readOnlyFork(std::vector<BackupCommitGraphTip> tips) {
    return {ReadOnlyFork{std::move(tips)}};
  }

  // decide settles the state of `tips`, ascending by identifier: none gives writable without
  // a tip, one gives writable with it. Of two or more, a tip settles the fork when its
  // acknowledged alternate tips name every other tip; exactly one such tip gives writable with
  // it, none or several a read-only fork of all tips. Epoch, generation and time play no part.
  [[nodiscard]] static BackupCommitGraphAccessState decide(const std::vector<BackupCommitGraphTip>& tips);

  [[nodiscard]] bool isWritable() const { return std::holds_alternative<Writable>(state); }
  // The payloads; nothing for the other case.
  [[nodiscard]] const Writable* asWritable() const { return std::get_if<Writable>(&state); }
  [[nodiscard]] const ReadOnlyFork* asReadOnlyFork() const { return std::get_if<ReadOnlyFork>(&state); }

  friend bool operator==(const BackupCommitGraphAccessState&, const BackupCommitGraphAccessState&) = default;
};

// BackupCommitGraphScan is what a package's commits and heads add up to.
struct BackupCommitGraphScan {
  BackupCommitGraphAccessState accessState;
  std::vector<BackupCommitGraphTip> retainedTips;  // all tips, ascending by identifier
  ByteSet validCommitIdentifiers;                  // every commit given, reached by a head or not
  std::uint64_t maximumWriterEpoch = 0;            // 0 when there are no commits

  friend bool operator==(const BackupCommitGraphScan&, const BackupCommitGraphScan&) = default;
};

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
