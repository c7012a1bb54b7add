#include "GaldrineBackupWriter/GaldrineBackupWriterSourcesV1.hpp"

#include <chrono>
#include <memory>

#include "GaldrineBackupWriter/GaldrineBackupPseudoRandomV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"

GaldrineBackupWriterSourcesV1 GaldrineBackupWriterSourcesV1::system() {
  return {[](std::span<std::uint8_t> bytes) { return GaldrinePlatformRandom::fill(bytes); },
          [] {
            const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
            return static_cast<std::int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
          }};
}

GaldrineBackupWriterSourcesV1 GaldrineBackupWriterSourcesV1::deterministic(std::uint64_t seed,
                                                                           std::int64_t startUTCMilliseconds,
                                                                           std::int64_t stepMilliseconds) {
  // Copies of the sources share one position, as copies of the system sources share the system.
  const auto drawn = std::make_shared<std::uint64_t>(0);
  const auto readings = std::make_shared<std::int64_t>(0);
  return {[seed, drawn](std::span<std::uint8_t> bytes) {
            GaldrineBackupPseudoRandomV1::fill(seed, *drawn, bytes);
            *drawn += bytes.size();
            return std::int32_t{0};
          },
          [startUTCMilliseconds, stepMilliseconds, readings] {
            return startUTCMilliseconds + stepMilliseconds * (*readings)++;
          }};
}

std::expected<GaldrineBackupIdentifierV1, GaldrineBackupWriterV1Error> GaldrineBackupWriterSourcesV1::identifier() const {
  GaldrineBackupIdentifierV1 identifier{};
  if (random(identifier) != 0) return std::unexpected(GaldrineBackupWriterV1Error::randomSourceFailed);
  return identifier;
}

std::expected<Bytes, GaldrineBackupWriterV1Error> GaldrineBackupWriterSourcesV1::key() const {
  Bytes key(32);
  if (random(key) != 0) {
    GaldrineSecureMemory::wipe(key);
    return std::unexpected(GaldrineBackupWriterV1Error::randomSourceFailed);
  }
  return key;
}
