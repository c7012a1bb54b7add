#pragma once
// PortableKeyEnvelopeMetadataV1 is the public part of a portable envelope: everything
// but the sealed key, readable without a credential. A record exists only in a valid state, so
// a factor never appears with another factor's derivation or limits.

#include <array>
#include <cstdint>
#include <expected>
#include <string_view>

#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "format/header/BackupAlgorithmV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::envelope {

// PortableKeyDerivationV1 is how a portable envelope turns its credential into the frame key.
// Each factor has exactly one derivation.
enum class PortableKeyDerivationV1 : std::uint8_t {
  argon2idV13,
  hkdfSHA256,
};

}  // namespace galdrine::envelope

namespace galdrine {

template <>
struct RawValueTable<envelope::PortableKeyDerivationV1> {
  static constexpr std::array<std::string_view, 2> rawValues{rawValue(format::BackupAlgorithmV1::passphraseKDF),
                                                             rawValue(format::BackupAlgorithmV1::recoveryKDF)};
};

}  // namespace galdrine

namespace galdrine::envelope {

class PortableKeyEnvelopeMetadataV1 {
 public:
  // make checks, in this order: a 16-byte salt (invalidSaltByteCount), a 16-byte artifact
  // identifier (invalidArtifactIdentifier), a 16-byte key slot identifier
  // (invalidKeySlotIdentifier); then the pairing: recoveryKey with hkdfSHA256 and both limits 0,
  // backupPassphrase with argon2idV13 and limits that Argon2idParameters accepts. Every
  // miss of the pairing is invalidDerivationProfile.
  [[nodiscard]] static std::expected<PortableKeyEnvelopeMetadataV1, PortableKeyEnvelopeV1Error> make(
      PortableKeyFactorV1 factor, PortableKeyDerivationV1 derivation, ByteView derivationSalt,
      std::uint64_t operationsLimit, std::int64_t memoryLimitBytes, ByteView artifactIdentifier,
      ByteView keySlotIdentifier, std::uint64_t generation);

  [[nodiscard]] PortableKeyFactorV1 factor() const { return factor_; }
  [[nodiscard]] PortableKeyDerivationV1 derivation() const { return derivation_; }
  [[nodiscard]] const Bytes& derivationSalt() const { return derivationSalt_; }
  [[nodiscard]] std::uint64_t operationsLimit() const { return operationsLimit_; }
  [[nodiscard]] std::int64_t memoryLimitBytes() const { return memoryLimitBytes_; }
  [[nodiscard]] const Bytes& artifactIdentifier() const { return artifactIdentifier_; }
  [[nodiscard]] const Bytes& keySlotIdentifier() const { return keySlotIdentifier_; }
  [[nodiscard]] std::uint64_t generation() const { return generation_; }

  friend bool operator==(const PortableKeyEnvelopeMetadataV1&, const PortableKeyEnvelopeMetadataV1&) = default;

 private:
  PortableKeyEnvelopeMetadataV1() = default;

  PortableKeyFactorV1 factor_{};
  PortableKeyDerivationV1 derivation_{};
  Bytes derivationSalt_;
  std::uint64_t operationsLimit_ = 0;
  std::int64_t memoryLimitBytes_ = 0;
  Bytes artifactIdentifier_;
  Bytes keySlotIdentifier_;
  std::uint64_t generation_ = 0;
};

}  // namespace galdrine::envelope
