#pragma once
// BackupAADDomainV1 names the kind of a sealed object inside its authenticated data,
// so that a ciphertext of one kind never opens as another.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupAADDomainV1 : std::uint8_t {
  bpmkPassphraseEnvelope,
  bpmkRecoveryEnvelope,
  payloadKeyEnvelope,
  manifest,
  snapshot,
  commit,
  head,
  packIndex,
  packEntry,
  resourceChunk,
  verificationReport,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupAADDomainV1> {
  static constexpr std::array<std::string_view, 11> rawValues{
      "galdrine/backup/bpmk-passphrase-envelope/v1",
      "galdrine/backup/bpmk-recovery-envelope/v1",
      "galdrine/backup/payload-key-envelope/v1",
      "galdrine/backup/manifest/v1",
      "galdrine/backup/snapshot/v1",
      "galdrine/backup/commit/v1",
      "galdrine/backup/head/v1",
      "galdrine/backup/pack-index/v1",
      "galdrine/backup/pack-entry/v1",
      "galdrine/backup/resource-chunk/v1",
      "galdrine/backup/verification-report/v1",
  };
};

}  // namespace galdrine
