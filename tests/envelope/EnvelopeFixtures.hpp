#pragma once
// Builders shared by the envelope, set and file suites: identifiers, contexts, and envelopes
// with a placeholder frame, so that set and file tests need no key derivation at all.

#include <gtest/gtest.h>

#include <cstdint>
#include <expected>
#include <optional>
#include <vector>

#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeEncodingV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"

namespace galdrine::envelope {

namespace EnvelopeFixtures {

// failureOf gives the error of a failed result and nothing for a success, so that one
// comparison checks both that it failed and how.
template <typename Value, typename Error>
[[nodiscard]] std::optional<Error> failureOf(const std::expected<Value, Error>& result) {
  return result ? std::nullopt : std::optional<Error>(result.error());
}

using Value = format::CBORValue;
using Factor = PortableKeyFactorV1;

// identifier gives 16 bytes (or `byteCount`) that differ for each seed.
[[nodiscard]] inline Bytes identifier(std::uint8_t seed, std::size_t byteCount = 16) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(seed * 16 + index);
  return bytes;
}

// context gives the context of a header for the package of the seed and the library domain of
// its seed.
[[nodiscard]] inline PortableKeyEnvelopeContextV1 context(ByteView artifact, ByteView keySlot, std::uint64_t generation,
                                                          std::uint8_t packageSeed = 1, std::uint8_t domainSeed = 2) {
  const auto header = format::BackupFormatHeaderV1::make(identifier(packageSeed));
  EXPECT_TRUE(header.has_value());
  auto made = PortableKeyEnvelopeContextV1::make(*header, identifier(domainSeed), artifact, keySlot, generation);
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] inline Bytes encoded(const Value& value,
                                   const format::CBORLimits& limits = PortableKeyEnvelopeV1::encodingLimits) {
  const auto bytes = format::DeterministicCBOR::encode(value, limits);
  EXPECT_TRUE(bytes.has_value());
  return bytes.value_or(Bytes{});
}

// placeholderEnvelope gives an envelope whose metadata is valid (the passphrase at the least
// Argon2id cost) and whose frame is a placeholder that no key opens.
[[nodiscard]] inline Bytes placeholderEnvelope(Factor factor, ByteView artifact, ByteView keySlot,
                                               std::uint64_t generation) {
  const bool passphrase = factor == Factor::backupPassphrase;
  const auto metadata = PortableKeyEnvelopeMetadataV1::make(
      factor, passphrase ? PortableKeyDerivationV1::argon2idV13 : PortableKeyDerivationV1::hkdfSHA256, identifier(0x0E),
      passphrase ? kdf::Argon2idParameters::minimumOperationsLimit : 0,
      passphrase ? kdf::Argon2idParameters::minimumMemoryLimitBytes : 0, artifact, keySlot, generation);
  EXPECT_TRUE(metadata.has_value());
  return metadata ? PortableKeyEnvelopeEncodingV1::encode(*metadata, Bytes(60, 0x5A)).value_or(Bytes{}) : Bytes{};
}

// entry makes a set entry of a placeholder envelope with the artifact and key slot of the seeds.
[[nodiscard]] inline BackupKeyEnvelopeEntryV1 entry(Factor factor, std::uint8_t artifactSeed, std::uint8_t keySlotSeed,
                                                    std::uint64_t generation, bool isActive = true) {
  auto made = BackupKeyEnvelopeEntryV1::make(
      placeholderEnvelope(factor, identifier(artifactSeed), identifier(keySlotSeed), generation), isActive);
  EXPECT_TRUE(made.has_value());
  return *made;
}

// setOf makes a set of the entries for the package of the seed and the library domain of seed 2.
[[nodiscard]] inline BackupKeyEnvelopeSetV1 setOf(std::vector<BackupKeyEnvelopeEntryV1> entries,
                                                  std::uint8_t packageSeed = 1) {
  auto made = BackupKeyEnvelopeSetV1::make(identifier(packageSeed), identifier(2), std::move(entries));
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] inline Bytes encodedSet(const BackupKeyEnvelopeSetV1& set) { return set.encoded().value_or(Bytes{}); }

}  // namespace EnvelopeFixtures

}  // namespace galdrine::envelope
