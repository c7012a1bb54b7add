#pragma once
// GaldrineBackupWriterSourcesV1 is everything the package writer draws from outside itself: the
// random bytes of identifiers and keys, and the time of day. The system sources are the secure
// random source and the real clock. Tests and fixtures inject reproducible ones, so that a
// package's file names and records come out the same on every run (the nonces that sealing
// draws stay fresh: the frames' bytes never repeat).

#include <cstdint>
#include <expected>
#include <functional>
#include <span>

#include "GaldrineBackupWriter/GaldrineBackupWriterV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

// A random source fills all of the span and gives 0, or gives a non-zero status.
using GaldrineBackupRandomSourceV1 = std::function<std::int32_t(std::span<std::uint8_t>)>;
// A clock gives the time in milliseconds since the Unix epoch.
using GaldrineBackupClockV1 = std::function<std::int64_t()>;

struct GaldrineBackupWriterSourcesV1 {
  GaldrineBackupRandomSourceV1 random;
  GaldrineBackupClockV1 clock;

  // system draws from the platform's secure random source and reads the real clock.
  [[nodiscard]] static GaldrineBackupWriterSourcesV1 system();
  // deterministic draws a reproducible stream of `seed` and reads a clock that gives
  // `startUTCMilliseconds` first and `stepMilliseconds` more at each later reading. Its keys
  // are predictable: it serves tests, fixtures and benchmarks, never a real backup.
  [[nodiscard]] static GaldrineBackupWriterSourcesV1 deterministic(std::uint64_t seed, std::int64_t startUTCMilliseconds,
                                                                   std::int64_t stepMilliseconds = 1000);

  // identifier draws 16 bytes; key draws 32 bytes, which the caller owns and wipes. A source
  // that fails is randomSourceFailed, and nothing drawn is given.
  [[nodiscard]] std::expected<GaldrineBackupIdentifierV1, GaldrineBackupWriterV1Error> identifier() const;
  [[nodiscard]] std::expected<Bytes, GaldrineBackupWriterV1Error> key() const;
  [[nodiscard]] std::int64_t now() const { return clock(); }
};
