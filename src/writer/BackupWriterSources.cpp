#include "writer/BackupWriterSources.hpp"

#include <chrono>
#include <memory>

#include "writer/BackupPseudoRandom.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/Random.hpp"

namespace galdrine::writer {

BackupWriterSources BackupWriterSources::system() {
  return {[](std::span<std::uint8_t> bytes) { return platform::Random::fill(bytes); },
          [] {
            const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
            return static_cast<std::int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
          }};
}

BackupWriterSources BackupWriterSources::deterministic(std::uint64_t seed,
                                                                           std::int64_t startUTCMilliseconds,
                                                                           std::int64_t stepMilliseconds) {
  // Copies of the sources share one position, as copies of the system sources share the system.
  const auto drawn = std::make_shared<std::uint64_t>(0);
  const auto readings = std::make_shared<std::int64_t>(0);
  return {[seed, drawn](std::span<std::uint8_t> bytes) {
            BackupPseudoRandom::fill(seed, *drawn, bytes);
            *drawn += bytes.size();
            return std::int32_t{0};
          },
          [startUTCMilliseconds, stepMilliseconds, readings] {
            return startUTCMilliseconds + stepMilliseconds * (*readings)++;
          }};
}

std::expected<format::BackupIdentifierV1, BackupWriterError> BackupWriterSources::identifier() const {
  format::BackupIdentifierV1 identifier{};
  if (random(identifier) != 0) return std::unexpected(BackupWriterError::randomSourceFailed);
  return identifier;
}

std::expected<Bytes, BackupWriterError> BackupWriterSources::key() const {
  Bytes key(32);
  if (random(key) != 0) {
    platform::SecureMemory::wipe(key);
    return std::unexpected(BackupWriterError::randomSourceFailed);
  }
  return key;
}

}  // namespace galdrine::writer
