#include "envelope/PortableKeyEnvelopeEncodingV1.hpp"

#include <limits>
#include <string>

#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"

namespace galdrine::envelope {

namespace {

using Error = PortableKeyEnvelopeV1Error;
using Value = format::CBORValue;
using Metadata = PortableKeyEnvelopeMetadataV1;
namespace EnvelopeV1 = PortableKeyEnvelopeV1;

enum EnvelopeKey : std::uint64_t {
  schemaKey = 0,
  versionKey = 1,
  algorithmKey = 2,
  factorKey = 3,
  derivationKey = 4,
  saltKey = 5,
  operationsLimitKey = 6,
  memoryLimitKey = 7,
  artifactKey = 8,
  keySlotKey = 9,
  generationKey = 10,
  sealedFrameKey = 11,
};

[[nodiscard]] std::expected<const std::string*, Error> textField(const Value& map, std::uint64_t key) {
  const std::string* text = map.find(key)->asTextString();
  if (!text) return std::unexpected(Error::invalidFieldType(key));
  return text;
}

[[nodiscard]] std::expected<const Bytes*, Error> bytesField(const Value& map, std::uint64_t key) {
  const Bytes* bytes = map.find(key)->asByteString();
  if (!bytes) return std::unexpected(Error::invalidFieldType(key));
  return bytes;
}

[[nodiscard]] std::expected<std::uint64_t, Error> unsignedField(const Value& map, std::uint64_t key) {
  const std::optional<std::uint64_t> number = map.find(key)->asUnsigned();
  if (!number) return std::unexpected(Error::invalidFieldType(key));
  return *number;
}

// The fixed texts and numbers come first, so an envelope of another kind stops before any
// field of ours is interpreted.
[[nodiscard]] std::expected<void, Error> readFixedFields(const Value& map) {
  const auto schema = textField(map, schemaKey);
  if (!schema) return std::unexpected(schema.error());
  if (**schema != EnvelopeV1::schemaIdentifier) return std::unexpected(Error::unsupportedSchema());
  const auto version = unsignedField(map, versionKey);
  if (!version) return std::unexpected(version.error());
  if (*version != EnvelopeV1::schemaVersion) return std::unexpected(Error::unsupportedVersion());
  const auto algorithm = textField(map, algorithmKey);
  if (!algorithm) return std::unexpected(algorithm.error());
  if (**algorithm != EnvelopeV1::algorithmIdentifier) return std::unexpected(Error::unsupportedAlgorithm());
  return {};
}

[[nodiscard]] std::expected<PortableKeyFactorV1, Error> readFactor(const Value& map,
                                                                   std::optional<PortableKeyFactorV1> expectedFactor) {
  const auto text = textField(map, factorKey);
  if (!text) return std::unexpected(text.error());
  const auto factor = fromRawValue<PortableKeyFactorV1>(**text);
  if (!factor) return std::unexpected(Error::unsupportedFactor());
  if (expectedFactor && *expectedFactor != *factor) return std::unexpected(Error::unexpectedFactor());
  return *factor;
}

[[nodiscard]] std::expected<PortableKeyDerivationV1, Error> readDerivation(const Value& map) {
  const auto text = textField(map, derivationKey);
  if (!text) return std::unexpected(text.error());
  const auto derivation = fromRawValue<PortableKeyDerivationV1>(**text);
  if (!derivation) return std::unexpected(Error::unsupportedDerivation());
  return *derivation;
}

[[nodiscard]] std::expected<std::int64_t, Error> readMemoryLimit(const Value& map) {
  const auto memoryLimit = unsignedField(map, memoryLimitKey);
  if (!memoryLimit) return std::unexpected(memoryLimit.error());
  if (*memoryLimit > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return std::unexpected(Error::invalidDerivationProfile());
  return static_cast<std::int64_t>(*memoryLimit);
}

[[nodiscard]] std::expected<Metadata, Error> readMetadata(const Value& map,
                                                          std::optional<PortableKeyFactorV1> expectedFactor) {
  if (auto fixed = readFixedFields(map); !fixed) return std::unexpected(fixed.error());
  const auto factor = readFactor(map, expectedFactor);
  if (!factor) return std::unexpected(factor.error());
  const auto derivation = readDerivation(map);
  if (!derivation) return std::unexpected(derivation.error());
  const auto memoryLimit = readMemoryLimit(map);
  if (!memoryLimit) return std::unexpected(memoryLimit.error());
  const auto salt = bytesField(map, saltKey);
  if (!salt) return std::unexpected(salt.error());
  const auto operationsLimit = unsignedField(map, operationsLimitKey);
  if (!operationsLimit) return std::unexpected(operationsLimit.error());
  const auto artifact = bytesField(map, artifactKey);
  if (!artifact) return std::unexpected(artifact.error());
  const auto keySlot = bytesField(map, keySlotKey);
  if (!keySlot) return std::unexpected(keySlot.error());
  const auto generation = unsignedField(map, generationKey);
  if (!generation) return std::unexpected(generation.error());
  return Metadata::make(*factor, *derivation, **salt, *operationsLimit, *memoryLimit, **artifact, **keySlot,
                        *generation);
}

[[nodiscard]] Value text(std::string_view value) { return Value::textString(std::string(value)); }

}  // namespace

namespace PortableKeyEnvelopeEncodingV1 {

std::expected<ReadEnvelope, Error> read(ByteView envelope, std::optional<PortableKeyFactorV1> expectedFactor) {
  const auto decoded = format::DeterministicCBOR::decode(envelope, EnvelopeV1::encodingLimits);
  if (!decoded || !decoded->asMap()) return std::unexpected(Error::malformedEnvelope());
  if (!decoded->hasKeysZeroThrough(sealedFrameKey)) return std::unexpected(Error::invalidFieldSet());
  auto metadata = readMetadata(*decoded, expectedFactor);
  if (!metadata) return std::unexpected(metadata.error());
  const Bytes* sealedFrame = decoded->find(sealedFrameKey)->asByteString();
  return ReadEnvelope{std::move(*metadata), sealedFrame ? std::optional<Bytes>(*sealedFrame) : std::nullopt};
}

std::expected<Bytes, Error> encode(const Metadata& metadata, ByteView sealedFrame) {
  // The memory limit is never negative in a valid record, so it is written unsigned.
  const Value::Map fields{
      {schemaKey, text(EnvelopeV1::schemaIdentifier)},
      {versionKey, Value::unsignedInteger(EnvelopeV1::schemaVersion)},
      {algorithmKey, text(EnvelopeV1::algorithmIdentifier)},
      {factorKey, text(rawValue(metadata.factor()))},
      {derivationKey, text(rawValue(metadata.derivation()))},
      {saltKey, Value::byteString(metadata.derivationSalt())},
      {operationsLimitKey, Value::unsignedInteger(metadata.operationsLimit())},
      {memoryLimitKey, Value::unsignedInteger(static_cast<std::uint64_t>(metadata.memoryLimitBytes()))},
      {artifactKey, Value::byteString(metadata.artifactIdentifier())},
      {keySlotKey, Value::byteString(metadata.keySlotIdentifier())},
      {generationKey, Value::unsignedInteger(metadata.generation())},
      {sealedFrameKey, Value::byteString(sealedFrame)},
  };
  auto encoded = format::DeterministicCBOR::encode(Value::map(fields), EnvelopeV1::encodingLimits);
  if (!encoded) return std::unexpected(Error::malformedEnvelope());
  return std::move(*encoded);
}

}  // namespace PortableKeyEnvelopeEncodingV1

}  // namespace galdrine::envelope
