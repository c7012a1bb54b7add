#include "format/sealing/BackupAuthenticatedDataV1.hpp"

#include <string>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace {

using Error = BackupAuthenticatedDataV1Error;
namespace FormatV1 = BackupFormatV1;

bool hasByteCount(ByteView bytes, std::int64_t byteCount) { return std::cmp_equal(bytes.size(), byteCount); }

Bytes copied(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

// Only the two master key envelopes are bound to the header, their slot and their KDF.
bool requiresEnvelopeBinding(BackupAADDomainV1 domain) {
  return domain == BackupAADDomainV1::bpmkPassphraseEnvelope || domain == BackupAADDomainV1::bpmkRecoveryEnvelope;
}

CBORValue text(std::string_view value) { return CBORValue::textString(std::string(value)); }

}  // namespace

BackupAuthenticatedDataV1::EnvelopeBinding::EnvelopeBinding(Bytes headerDigest, Bytes keySlotIdentifier,
                                                            Bytes kdfParameterDigest)
    : headerDigest_(std::move(headerDigest)),
      keySlotIdentifier_(std::move(keySlotIdentifier)),
      kdfParameterDigest_(std::move(kdfParameterDigest)) {}

std::expected<BackupAuthenticatedDataV1::EnvelopeBinding, Error> BackupAuthenticatedDataV1::EnvelopeBinding::make(
    ByteView headerDigest, ByteView keySlotIdentifier, ByteView kdfParameterDigest) {
  if (!hasByteCount(headerDigest, FormatV1::digestByteCount)) return std::unexpected(Error::invalidHeaderDigest);
  if (!hasByteCount(keySlotIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidKeySlotIdentifier);
  if (!hasByteCount(kdfParameterDigest, FormatV1::digestByteCount))
    return std::unexpected(Error::invalidKDFParameterDigest);
  return EnvelopeBinding(copied(headerDigest), copied(keySlotIdentifier), copied(kdfParameterDigest));
}

BackupAuthenticatedDataV1::BackupAuthenticatedDataV1(BackupAADDomainV1 domain, Bytes packageIdentifier,
                                                     Bytes libraryDomainIdentifier, Bytes artifactIdentifier,
                                                     std::uint64_t ordinal,
                                                     std::optional<EnvelopeBinding> envelopeBinding)
    : domain_(domain),
      packageIdentifier_(std::move(packageIdentifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      artifactIdentifier_(std::move(artifactIdentifier)),
      ordinal_(ordinal),
      envelopeBinding_(std::move(envelopeBinding)) {}

std::expected<BackupAuthenticatedDataV1, Error> BackupAuthenticatedDataV1::make(
    BackupAADDomainV1 domain, ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
    std::uint64_t ordinal, std::optional<EnvelopeBinding> envelopeBinding) {
  if (!hasByteCount(packageIdentifier, FormatV1::packageIdentifierByteCount))
    return std::unexpected(Error::invalidPackageIdentifier);
  if (!hasByteCount(libraryDomainIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidLibraryDomainIdentifier);
  if (!hasByteCount(artifactIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidArtifactIdentifier);
  if (requiresEnvelopeBinding(domain) && !envelopeBinding) return std::unexpected(Error::envelopeBindingRequired);
  if (!requiresEnvelopeBinding(domain) && envelopeBinding) return std::unexpected(Error::envelopeBindingNotAllowed);
  return BackupAuthenticatedDataV1(domain, copied(packageIdentifier), copied(libraryDomainIdentifier),
                                   copied(artifactIdentifier), ordinal, std::move(envelopeBinding));
}

std::expected<Bytes, CBORError> BackupAuthenticatedDataV1::encoded() const {
  // Position is the field: this is an array, never a map.
  CBORValue::Array items{
      text(rawValue(domain_)),
      text(FormatV1::canonicalFormatIdentifier),
      CBORValue::unsignedInteger(FormatV1::formatVersion),
      text(rawValue(BackupAlgorithmV1::payloadAEAD)),
      CBORValue::byteString(packageIdentifier_),
      CBORValue::byteString(libraryDomainIdentifier_),
      CBORValue::byteString(artifactIdentifier_),
      CBORValue::unsignedInteger(ordinal_),
  };
  if (envelopeBinding_) {
    items.push_back(CBORValue::byteString(envelopeBinding_->headerDigest()));
    items.push_back(CBORValue::byteString(envelopeBinding_->keySlotIdentifier()));
    items.push_back(CBORValue::byteString(envelopeBinding_->kdfParameterDigest()));
  }
  return DeterministicCBOR::encode(CBORValue::array(std::move(items)), CBORLimits::authenticatedData());
}

}  // namespace galdrine::format
