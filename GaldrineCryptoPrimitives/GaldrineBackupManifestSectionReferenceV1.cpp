#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionReferenceV1.hpp"

#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

bool isSortKey(const Bytes& sortKey) {
  return sortKey.size() >= Limits::minimumSortKeyByteCount && sortKey.size() <= Limits::maximumSortKeyByteCount;
}

bool hasValidBounds(std::uint64_t ordinal, std::uint64_t recordCount, const Bytes& firstSortKey, const Bytes& lastSortKey) {
  return ordinal <= Limits::maximumSectionOrdinal && recordCount >= 1 && recordCount <= Limits::maximumSectionRecordCount &&
         isSortKey(firstSortKey) && isSortKey(lastSortKey);
}

}  // namespace

std::expected<GaldrineBackupManifestSectionReferenceV1, GaldrineBackupGraphV1Error>
GaldrineBackupManifestSectionReferenceV1::make(GaldrineBackupArtifactReferenceV1 artifact, std::uint64_t ordinal,
                                               GaldrineBackupManifestSectionKindV1 kind,
                                               GaldrineBackupManifestCompressionV1 compression, std::uint64_t recordCount,
                                               Bytes firstSortKey, Bytes lastSortKey,
                                               std::uint64_t decodedPlaintextByteCount, Bytes decodedPlaintextSHA256) {
  constexpr auto invalid = GaldrineBackupGraphV1Error::invalidReference;
  if (!hasValidBounds(ordinal, recordCount, firstSortKey, lastSortKey)) return std::unexpected(invalid);
  if (GaldrineByteOrder::precedes(lastSortKey, firstSortKey)) return std::unexpected(invalid);
  if (decodedPlaintextByteCount == 0 || decodedPlaintextByteCount > Limits::manifestSectionPlaintextLimit) {
    return std::unexpected(invalid);
  }
  if (decodedPlaintextSHA256.size() != Limits::digestByteCount) return std::unexpected(invalid);
  if (compression != GaldrineBackupManifestCompressionV1::none) {
    return std::unexpected(GaldrineBackupGraphV1Error::unsupportedCompression);
  }
  // Sections are stored uncompressed, so the frame's plaintext is the decoded section itself.
  if (artifact.plaintextByteCount() != decodedPlaintextByteCount ||
      artifact.plaintextSHA256() != decodedPlaintextSHA256) {
    return std::unexpected(invalid);
  }
  return GaldrineBackupManifestSectionReferenceV1(std::move(artifact), ordinal, kind, compression, recordCount,
                                                  std::move(firstSortKey), std::move(lastSortKey),
                                                  decodedPlaintextByteCount, std::move(decodedPlaintextSHA256));
}

GaldrineBackupManifestSectionReferenceV1::GaldrineBackupManifestSectionReferenceV1(
    GaldrineBackupArtifactReferenceV1 artifact, std::uint64_t ordinal, GaldrineBackupManifestSectionKindV1 kind,
    GaldrineBackupManifestCompressionV1 compression, std::uint64_t recordCount, Bytes firstSortKey, Bytes lastSortKey,
    std::uint64_t decodedPlaintextByteCount, Bytes decodedPlaintextSHA256)
    : artifact_(std::move(artifact)),
      ordinal_(ordinal),
      kind_(kind),
      compression_(compression),
      recordCount_(recordCount),
      firstSortKey_(std::move(firstSortKey)),
      lastSortKey_(std::move(lastSortKey)),
      decodedPlaintextByteCount_(decodedPlaintextByteCount),
      decodedPlaintextSHA256_(std::move(decodedPlaintextSHA256)) {}

GaldrineCBORValue GaldrineBackupManifestSectionReferenceV1::cborValue() const {
  return GaldrineCBORValue::array({
      artifact_.cborValue(),
      GaldrineCBORValue::unsignedInteger(ordinal_),
      GaldrineCBORValue::unsignedInteger(rawValue(kind_)),
      GaldrineCBORValue::unsignedInteger(rawValue(compression_)),
      GaldrineCBORValue::unsignedInteger(recordCount_),
      GaldrineCBORValue::byteString(firstSortKey_),
      GaldrineCBORValue::byteString(lastSortKey_),
      GaldrineCBORValue::unsignedInteger(decodedPlaintextByteCount_),
      GaldrineCBORValue::byteString(decodedPlaintextSHA256_),
  });
}

bool GaldrineBackupManifestSectionReferenceV1::hasCBORShape(const GaldrineCBORBorrowedValue& value) {
  if (!CBOR::isArrayOfCount(value, 9)) return false;
  const auto& kind = CBOR::item(value, 2);
  const auto& compression = CBOR::item(value, 3);
  return GaldrineBackupArtifactReferenceV1::hasCBORShape(CBOR::item(value, 0)) && CBOR::isUnsigned(CBOR::item(value, 1)) &&
         CBOR::isUnsigned(kind) && fromRawValue<GaldrineBackupManifestSectionKindV1>(CBOR::unsignedInteger(kind)) &&
         CBOR::isUnsigned(compression) &&
         fromRawValue<GaldrineBackupManifestCompressionV1>(CBOR::unsignedInteger(compression)) &&
         CBOR::isUnsigned(CBOR::item(value, 4)) && CBOR::isByteString(CBOR::item(value, 5)) &&
         CBOR::isByteString(CBOR::item(value, 6)) && CBOR::isUnsigned(CBOR::item(value, 7)) &&
         CBOR::isByteString(CBOR::item(value, 8));
}

std::expected<GaldrineBackupManifestSectionReferenceV1, GaldrineBackupGraphV1Error>
GaldrineBackupManifestSectionReferenceV1::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  auto artifact = GaldrineBackupArtifactReferenceV1::fromCBOR(CBOR::item(value, 0));
  if (!artifact) return std::unexpected(artifact.error());
  return make(std::move(*artifact), CBOR::unsignedInteger(CBOR::item(value, 1)),
              *fromRawValue<GaldrineBackupManifestSectionKindV1>(CBOR::unsignedInteger(CBOR::item(value, 2))),
              *fromRawValue<GaldrineBackupManifestCompressionV1>(CBOR::unsignedInteger(CBOR::item(value, 3))),
              CBOR::unsignedInteger(CBOR::item(value, 4)), CBOR::ownedByteString(CBOR::item(value, 5)),
              CBOR::ownedByteString(CBOR::item(value, 6)), CBOR::unsignedInteger(CBOR::item(value, 7)),
              CBOR::ownedByteString(CBOR::item(value, 8)));
}
