#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeBindingV1.hpp"

#include <string>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"
#include "GaldrineCryptoPrimitives/GaldrineSHA256.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"

namespace {

using Value = GaldrineCBORValue;
using Metadata = GaldrinePortableKeyEnvelopeMetadataV1;
using Context = GaldrinePortableKeyEnvelopeContextV1;
using AuthenticatedData = GaldrineBackupAuthenticatedDataV1;
namespace EnvelopeV1 = GaldrinePortableKeyEnvelopeV1;

[[nodiscard]] Value text(std::string_view value) { return Value::textString(std::string(value)); }

[[nodiscard]] std::optional<Bytes> encodedArray(Value::Array items) {
  auto encoded = GaldrineDeterministicCBOR::encode(Value::array(std::move(items)), GaldrineCBORLimits::authenticatedData());
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

[[nodiscard]] std::optional<Bytes> headerDigest(const Context& context) {
  const auto headerData = context.header().encoded();
  if (!headerData) return std::nullopt;
  return GaldrineSHA256::digest(*headerData);
}

[[nodiscard]] GaldrineBackupAADDomainV1 domainOf(GaldrinePortableKeyFactorV1 factor) {
  switch (factor) {
    case GaldrinePortableKeyFactorV1::backupPassphrase: return GaldrineBackupAADDomainV1::bpmkPassphraseEnvelope;
    case GaldrinePortableKeyFactorV1::recoveryKey: return GaldrineBackupAADDomainV1::bpmkRecoveryEnvelope;
  }
  std::unreachable();
}

}  // namespace

namespace GaldrinePortableKeyEnvelopeBindingV1 {

std::optional<Bytes> kdfParameterDigest(const Metadata& metadata) {
  const auto encoded = encodedArray({
      text(EnvelopeV1::schemaIdentifier),
      Value::unsignedInteger(EnvelopeV1::schemaVersion),
      text(rawValue(metadata.factor())),
      text(rawValue(metadata.derivation())),
      Value::byteString(metadata.derivationSalt()),
      Value::unsignedInteger(metadata.operationsLimit()),
      Value::unsignedInteger(static_cast<std::uint64_t>(metadata.memoryLimitBytes())),  // never negative when valid
      Value::byteString(metadata.artifactIdentifier()),
      Value::byteString(metadata.keySlotIdentifier()),
      Value::unsignedInteger(metadata.generation()),
  });
  if (!encoded) return std::nullopt;
  return GaldrineSHA256::digest(*encoded);
}

std::optional<Bytes> authenticatedData(const Metadata& metadata, const Context& context) {
  const auto header = headerDigest(context);
  const auto parameters = kdfParameterDigest(metadata);
  if (!header || !parameters) return std::nullopt;
  auto binding = AuthenticatedData::EnvelopeBinding::make(*header, metadata.keySlotIdentifier(), *parameters);
  if (!binding) return std::nullopt;
  const auto record = AuthenticatedData::make(domainOf(metadata.factor()), context.header().packageIdentifier(),
                                              context.libraryDomainIdentifier(), metadata.artifactIdentifier(),
                                              metadata.generation(), std::move(*binding));
  if (!record) return std::nullopt;
  auto encoded = record->encoded();
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

std::optional<Bytes> recoveryKeyDerivationInfo(const Metadata& metadata, const Context& context) {
  const auto header = headerDigest(context);
  if (!header) return std::nullopt;
  return encodedArray({
      text(rawValue(GaldrineBackupAADDomainV1::bpmkRecoveryEnvelope)),
      text(EnvelopeV1::schemaIdentifier),
      Value::unsignedInteger(EnvelopeV1::schemaVersion),
      Value::byteString(context.header().packageIdentifier()),
      Value::byteString(context.libraryDomainIdentifier()),
      Value::byteString(metadata.artifactIdentifier()),
      Value::byteString(metadata.keySlotIdentifier()),
      Value::unsignedInteger(metadata.generation()),
      Value::byteString(*header),
  });
}

}  // namespace GaldrinePortableKeyEnvelopeBindingV1
