#pragma once
// BackupWriterSources is everything the package writer draws from outside itself: the
// random bytes of identifiers and keys, and the time of day. system() is the secure random
// source and the real clock, what every package is written with. Tests and benchmarks inject
// reproducible ones, so that a package's file names and records come out the same on every
// run (the nonces that sealing draws stay fresh: the frames' bytes never repeat).

#include <cstdint>
#include <expected>
#include <functional>
#include <span>

#include "format/graph/BackupIdentifierV1.hpp"
#include "platform/Bytes.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

// A random source fills all of the span and gives 0, or gives a non-zero status.
using BackupRandomSource = std::function<std::int32_t(std::span<std::uint8_t>)>;
// A clock gives the time in milliseconds since the Unix epoch.
using BackupClock = std::function<std::int64_t()>;

struct BackupWriterSources {
  BackupRandomSource random;
  BackupClock clock;

  // system draws from the platform's secure random source and reads the real clock.
  [[nodiscard]] static BackupWriterSources system();

  // identifier draws 16 bytes; key draws 32 bytes, which the caller owns and wipes. A source
  // that fails is randomSourceFailed, and nothing drawn is given.
  [[nodiscard]] std::expected<format::BackupIdentifierV1, BackupWriterError> identifier() const;
  [[nodiscard]] std::expected<Bytes, BackupWriterError> key() const;
  [[nodiscard]] std::int64_t now() const { return clock(); }
};

}  // namespace galdrine::writer
