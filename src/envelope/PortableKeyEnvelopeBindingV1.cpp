#include "envelope/PortableKeyEnvelopeBindingV1.hpp"

#include <string>

#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::envelope {

namespace {

using Value = format::CBORValue;
using Metadata = PortableKeyEnvelopeMetadataV1;
using Context = PortableKeyEnvelopeContextV1;
using AuthenticatedData = format::BackupAuthenticatedDataV1;
namespace EnvelopeV1 = PortableKeyEnvelopeV1;

// digestBytes is the SHA-256 of `bytes` as the byte string a binding carries.
[[nodiscard]] Bytes digestBytes(ByteView bytes) {
  const platform::SHA256Digest digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

[[nodiscard]] Value text(std::string_view value) { return Value::textString(std::string(value)); }

[[nodiscard]] std::optional<Bytes> encodedArray(Value::Array items) {
  auto encoded =
      format::DeterministicCBOR::encode(Value::array(std::move(items)), format::CBORLimits::authenticatedData());
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

[[nodiscard]] std::optional<Bytes> headerDigest(const Context& context) {
  const auto headerData = context.header().encoded();
  if (!headerData) return std::nullopt;
  return digestBytes(*headerData);
}

[[nodiscard]] format::BackupAADDomainV1 domainOf(PortableKeyFactorV1 factor) {
  switch (factor) {
    case PortableKeyFactorV1::backupPassphrase:
      return format::BackupAADDomainV1::bpmkPassphraseEnvelope;
    case PortableKeyFactorV1::recoveryKey:
      return format::BackupAADDomainV1::bpmkRecoveryEnvelope;
  }
  std::unreachable();
}

}  // namespace

namespace PortableKeyEnvelopeBindingV1 {

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
  return digestBytes(*encoded);
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
      text(rawValue(format::BackupAADDomainV1::bpmkRecoveryEnvelope)),
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

}  // namespace PortableKeyEnvelopeBindingV1

}  // namespace galdrine::envelope
