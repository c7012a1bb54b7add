#pragma once
// BackupAlgorithmV1 is the fixed algorithm suite of version 1 of the package format.
// There is no negotiation: a package either uses exactly these or is refused.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/RawValue.hpp"

namespace galdrine::format {

enum class BackupAlgorithmV1 : std::uint8_t {
  payloadAEAD,
  contentDigest,
  passphraseKDF,
  recoveryKDF,
  manifestEncoding,
  manifestCompression,
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupAlgorithmV1> {
  static constexpr std::array<std::string_view, 6> rawValues{
      "aes-256-gcm", "sha-256", "argon2id-v1.3", "hkdf-sha-256", "cbor-rfc8949-core-deterministic", "zstd",
  };
};

}  // namespace galdrine
