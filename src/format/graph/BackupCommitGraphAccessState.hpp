#pragma once
// BackupCommitGraphAccessState says whether a package may be written to: writable
// with one canonical tip (none when there are no tips at all), or a read-only fork between
// tips that no single tip settles.

#include <optional>
#include <variant>
#include <vector>

#include "format/graph/BackupCommitGraphTip.hpp"

namespace galdrine::format {

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

  friend bool operator==(const BackupCommitGraphAccessState&,
                         const BackupCommitGraphAccessState&) = default;
};

}  // namespace galdrine::format
