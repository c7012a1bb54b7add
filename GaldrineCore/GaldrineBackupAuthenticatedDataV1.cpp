#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"

#include <string>
#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"

namespace {

using Error = GaldrineBackupAuthenticatedDataV1Error;
namespace FormatV1 = GaldrineBackupFormatV1;

bool hasByteCount(ByteView bytes, std::int64_t byteCount) { return std::cmp_equal(bytes.size(), byteCount); }

Bytes copied(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

// Only the two master key envelopes are bound to the header, their slot and their KDF.
bool requiresEnvelopeBinding(GaldrineBackupAADDomainV1 domain) {
  return domain == GaldrineBackupAADDomainV1::bpmkPassphraseEnvelope ||
         domain == GaldrineBackupAADDomainV1::bpmkRecoveryEnvelope;
}

GaldrineCBORValue text(std::string_view value) { return GaldrineCBORValue::textString(std::string(value)); }

}  // namespace

GaldrineBackupAuthenticatedDataV1::EnvelopeBinding::EnvelopeBinding(Bytes headerDigest, Bytes keySlotIdentifier,
                                                                    Bytes kdfParameterDigest)
    : headerDigest_(std::move(headerDigest)),
      keySlotIdentifier_(std::move(keySlotIdentifier)),
      kdfParameterDigest_(std::move(kdfParameterDigest)) {}

std::expected<GaldrineBackupAuthenticatedDataV1::EnvelopeBinding, Error>
GaldrineBackupAuthenticatedDataV1::EnvelopeBinding::make(ByteView headerDigest, ByteView keySlotIdentifier,
                                                         ByteView kdfParameterDigest) {
  if (!hasByteCount(headerDigest, FormatV1::digestByteCount)) return std::unexpected(Error::invalidHeaderDigest);
  if (!hasByteCount(keySlotIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidKeySlotIdentifier);
  if (!hasByteCount(kdfParameterDigest, FormatV1::digestByteCount))
    return std::unexpected(Error::invalidKDFParameterDigest);
  return EnvelopeBinding(copied(headerDigest), copied(keySlotIdentifier), copied(kdfParameterDigest));
}

GaldrineBackupAuthenticatedDataV1::GaldrineBackupAuthenticatedDataV1(GaldrineBackupAADDomainV1 domain,
                                                                     Bytes packageIdentifier,
                                                                     Bytes libraryDomainIdentifier,
                                                                     Bytes artifactIdentifier, std::uint64_t ordinal,
                                                                     std::optional<EnvelopeBinding> envelopeBinding)
    : domain_(domain),
      packageIdentifier_(std::move(packageIdentifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      artifactIdentifier_(std::move(artifactIdentifier)),
      ordinal_(ordinal),
      envelopeBinding_(std::move(envelopeBinding)) {}

std::expected<GaldrineBackupAuthenticatedDataV1, Error> GaldrineBackupAuthenticatedDataV1::make(
    GaldrineBackupAADDomainV1 domain, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView artifactIdentifier, std::uint64_t ordinal, std::optional<EnvelopeBinding> envelopeBinding) {
  if (!hasByteCount(packageIdentifier, FormatV1::packageIdentifierByteCount))
    return std::unexpected(Error::invalidPackageIdentifier);
  if (!hasByteCount(libraryDomainIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidLibraryDomainIdentifier);
  if (!hasByteCount(artifactIdentifier, FormatV1::artifactIdentifierByteCount))
    return std::unexpected(Error::invalidArtifactIdentifier);
  if (requiresEnvelopeBinding(domain) && !envelopeBinding) return std::unexpected(Error::envelopeBindingRequired);
  if (!requiresEnvelopeBinding(domain) && envelopeBinding) return std::unexpected(Error::envelopeBindingNotAllowed);
  return GaldrineBackupAuthenticatedDataV1(domain, copied(packageIdentifier), copied(libraryDomainIdentifier),
                                           copied(artifactIdentifier), ordinal, std::move(envelopeBinding));
}

std::expected<Bytes, GaldrineCBORError> GaldrineBackupAuthenticatedDataV1::encoded() const {
  // Position is the field: this is an array, never a map.
  GaldrineCBORValue::Array items{
      text(rawValue(domain_)),
      text(FormatV1::canonicalFormatIdentifier),
      GaldrineCBORValue::unsignedInteger(FormatV1::formatVersion),
      text(rawValue(GaldrineBackupAlgorithmV1::payloadAEAD)),
      GaldrineCBORValue::byteString(packageIdentifier_),
      GaldrineCBORValue::byteString(libraryDomainIdentifier_),
      GaldrineCBORValue::byteString(artifactIdentifier_),
      GaldrineCBORValue::unsignedInteger(ordinal_),
  };
  if (envelopeBinding_) {
    items.push_back(GaldrineCBORValue::byteString(envelopeBinding_->headerDigest()));
    items.push_back(GaldrineCBORValue::byteString(envelopeBinding_->keySlotIdentifier()));
    items.push_back(GaldrineCBORValue::byteString(envelopeBinding_->kdfParameterDigest()));
  }
  return GaldrineDeterministicCBOR::encode(GaldrineCBORValue::array(std::move(items)),
                                           GaldrineCBORLimits::authenticatedData());
}
