#include "writer/BackupWriterSources.hpp"

#include <chrono>

#include "platform/Random.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::writer {

BackupWriterSources BackupWriterSources::system() {
  return {[](std::span<std::uint8_t> bytes) { return platform::Random::fill(bytes); },
          [] {
            const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
            return static_cast<std::int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
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
