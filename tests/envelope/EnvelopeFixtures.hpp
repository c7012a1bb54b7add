#pragma once
// Builders shared by the envelope, set and file suites: identifiers, contexts, and envelopes
// laid out field by field with a placeholder frame, so that set and file tests need no key
// derivation at all.

#include <gtest/gtest.h>

#include <cstdint>
#include <expected>
#include <optional>
#include <ostream>
#include <string>

#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"

namespace galdrine::envelope {

// PrintTo makes a failed comparison name the case and its payloads.
inline void PrintTo(const PortableKeyEnvelopeV1Error& error, std::ostream* out) {
  *out << "envelope error " << static_cast<int>(error.code) << " (status " << error.status << ", key " << error.key << ")";
}

namespace EnvelopeFixtures {

// failureOf gives the error of a failed result and nothing for a success, so that one
// comparison checks both that it failed and how.
template <typename Value, typename Error>
[[nodiscard]] std::optional<Error> failureOf(const std::expected<Value, Error>& result) {
  if (result) return std::nullopt;
  return result.error();
}

using Value = format::CBORValue;
using Factor = PortableKeyFactorV1;

inline constexpr std::uint64_t minimumOperationsLimit = kdf::Argon2idParameters::minimumOperationsLimit;
inline constexpr std::int64_t minimumMemoryLimitBytes = kdf::Argon2idParameters::minimumMemoryLimitBytes;

// identifier gives 16 bytes (or `byteCount`) that differ for each seed.
[[nodiscard]] inline Bytes identifier(std::uint8_t seed, std::size_t byteCount = 16) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(seed * 16 + index);
  return bytes;
}

[[nodiscard]] inline format::BackupFormatHeaderV1 header(std::uint8_t packageSeed = 1) {
  auto made = format::BackupFormatHeaderV1::make(identifier(packageSeed));
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] inline PortableKeyEnvelopeContextV1 context(ByteView artifact, ByteView keySlot,
                                                                 std::uint64_t generation, std::uint8_t packageSeed = 1,
                                                                 std::uint8_t libraryDomainSeed = 2) {
  auto made = PortableKeyEnvelopeContextV1::make(header(packageSeed), identifier(libraryDomainSeed), artifact,
                                                         keySlot, generation);
  EXPECT_TRUE(made.has_value());
  return *made;
}

// contextOf matches whatever artifact, slot and generation the envelope declares.
[[nodiscard]] inline PortableKeyEnvelopeContextV1 contextOf(ByteView envelope) {
  const auto metadata = PortableKeyEnvelopeV1::metadata(envelope);
  EXPECT_TRUE(metadata.has_value());
  if (!metadata) return context(identifier(0), identifier(0), 0);
  return context(metadata->artifactIdentifier(), metadata->keySlotIdentifier(), metadata->generation());
}

[[nodiscard]] inline Value::Map decodedMap(ByteView envelope) {
  const auto decoded = format::DeterministicCBOR::decode(envelope, PortableKeyEnvelopeV1::encodingLimits);
  EXPECT_TRUE(decoded.has_value() && decoded->asMap());
  return decoded && decoded->asMap() ? *decoded->asMap() : Value::Map{};
}

[[nodiscard]] inline Bytes encoded(const Value& value, const format::CBORLimits& limits = PortableKeyEnvelopeV1::encodingLimits) {
  const auto bytes = format::DeterministicCBOR::encode(value, limits);
  EXPECT_TRUE(bytes.has_value());
  return bytes ? *bytes : Bytes{};
}

// envelopeFields lays out an envelope whose metadata is valid and whose frame is a placeholder
// that no key opens.
[[nodiscard]] inline Value::Map envelopeFields(Factor factor, ByteView artifact, ByteView keySlot,
                                               std::uint64_t generation) {
  const bool passphrase = factor == Factor::backupPassphrase;
  return {
      {0, Value::textString("com.galdrine.backup.bpmk-envelope.v1")},
      {1, Value::unsignedInteger(1)},
      {2, Value::textString("aes-256-gcm")},
      {3, Value::textString(passphrase ? "backup-passphrase" : "recovery-key")},
      {4, Value::textString(passphrase ? "argon2id-v1.3" : "hkdf-sha-256")},
      {5, Value::byteString(identifier(0x0E))},
      {6, Value::unsignedInteger(passphrase ? minimumOperationsLimit : 0)},
      {7, Value::unsignedInteger(passphrase ? static_cast<std::uint64_t>(minimumMemoryLimitBytes) : 0)},
      {8, Value::byteString(artifact)},
      {9, Value::byteString(keySlot)},
      {10, Value::unsignedInteger(generation)},
      {11, Value::byteString(Bytes(60, 0x5A))},
  };
}

[[nodiscard]] inline Bytes placeholderEnvelope(Factor factor, ByteView artifact, ByteView keySlot, std::uint64_t generation) {
  return encoded(Value::map(envelopeFields(factor, artifact, keySlot, generation)));
}

}  // namespace EnvelopeFixtures

}  // namespace galdrine::envelope
