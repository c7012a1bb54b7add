#pragma once
// GaldrineBackupCommitGraphAccessStateV1 says whether a package may be written to: writable
// with one canonical tip (none when there are no tips at all), or a read-only fork between
// tips that no single tip settles.

#include <optional>
#include <variant>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphTipV1.hpp"

struct GaldrineBackupCommitGraphAccessStateV1 {
  struct Writable {
    std::optional<GaldrineBackupCommitGraphTipV1> canonicalTip;
    friend bool operator==(const Writable&, const Writable&) = default;
  };
  struct ReadOnlyFork {
    std::vector<GaldrineBackupCommitGraphTipV1> tips;  // ascending by identifier
    friend bool operator==(const ReadOnlyFork&, const ReadOnlyFork&) = default;
  };

  std::variant<Writable, ReadOnlyFork> state;

  static GaldrineBackupCommitGraphAccessStateV1 writable(std::optional<GaldrineBackupCommitGraphTipV1> canonicalTip) {
    return {Writable{std::move(canonicalTip)}};
  }
  static GaldrineBackupCommitGraphAccessStateV1 readOnlyFork(std::vector<GaldrineBackupCommitGraphTipV1> tips) {
    return {ReadOnlyFork{std::move(tips)}};
  }

  // decide settles the state of `tips`, ascending by identifier: none gives writable without
  // a tip, one gives writable with it. Of two or more, a tip settles the fork when its
  // acknowledged alternate tips name every other tip; exactly one such tip gives writable with
  // it, none or several a read-only fork of all tips. Epoch, generation and time play no part.
  [[nodiscard]] static GaldrineBackupCommitGraphAccessStateV1 decide(const std::vector<GaldrineBackupCommitGraphTipV1>& tips);

  [[nodiscard]] bool isWritable() const { return std::holds_alternative<Writable>(state); }
  // The payloads; nothing for the other case.
  [[nodiscard]] const Writable* asWritable() const { return std::get_if<Writable>(&state); }
  [[nodiscard]] const ReadOnlyFork* asReadOnlyFork() const { return std::get_if<ReadOnlyFork>(&state); }

  friend bool operator==(const GaldrineBackupCommitGraphAccessStateV1&,
                         const GaldrineBackupCommitGraphAccessStateV1&) = default;
};
