#include "format/graph/BackupManifestSectionReferenceV1.hpp"

#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

bool isSortKey(const Bytes& sortKey) {
  return sortKey.size() >= Limits::minimumSortKeyByteCount && sortKey.size() <= Limits::maximumSortKeyByteCount;
}

bool hasValidBounds(std::uint64_t ordinal, std::uint64_t recordCount, const Bytes& firstSortKey,
                    const Bytes& lastSortKey) {
  return ordinal <= Limits::maximumSectionOrdinal && recordCount >= 1 &&
         recordCount <= Limits::maximumSectionRecordCount && isSortKey(firstSortKey) && isSortKey(lastSortKey);
}

}  // namespace

std::expected<BackupManifestSectionReferenceV1, BackupGraphV1Error> BackupManifestSectionReferenceV1::make(
    BackupArtifactReferenceV1 artifact, std::uint64_t ordinal, BackupManifestSectionKindV1 kind,
    BackupManifestCompressionV1 compression, std::uint64_t recordCount, Bytes firstSortKey, Bytes lastSortKey,
    std::uint64_t decodedPlaintextByteCount, Bytes decodedPlaintextSHA256) {
  constexpr auto invalid = BackupGraphV1Error::invalidReference;
  if (!hasValidBounds(ordinal, recordCount, firstSortKey, lastSortKey)) return std::unexpected(invalid);
  if (ByteOrder::precedes(lastSortKey, firstSortKey)) return std::unexpected(invalid);
  if (decodedPlaintextByteCount == 0 || decodedPlaintextByteCount > Limits::manifestSectionPlaintextLimit) {
    return std::unexpected(invalid);
  }
  if (decodedPlaintextSHA256.size() != Limits::digestByteCount) return std::unexpected(invalid);
  if (compression != BackupManifestCompressionV1::none) {
    return std::unexpected(BackupGraphV1Error::unsupportedCompression);
  }
  // Sections are stored uncompressed, so the frame's plaintext is the decoded section itself.
  if (artifact.plaintextByteCount() != decodedPlaintextByteCount ||
      artifact.plaintextSHA256() != decodedPlaintextSHA256) {
    return std::unexpected(invalid);
  }
  return BackupManifestSectionReferenceV1(std::move(artifact), ordinal, kind, compression, recordCount,
                                          std::move(firstSortKey), std::move(lastSortKey), decodedPlaintextByteCount,
                                          std::move(decodedPlaintextSHA256));
}

BackupManifestSectionReferenceV1::BackupManifestSectionReferenceV1(
    BackupArtifactReferenceV1 artifact, std::uint64_t ordinal, BackupManifestSectionKindV1 kind,
    BackupManifestCompressionV1 compression, std::uint64_t recordCount, Bytes firstSortKey, Bytes lastSortKey,
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

CBORValue BackupManifestSectionReferenceV1::cborValue() const {
  return CBORValue::array({
      artifact_.cborValue(),
      CBORValue::unsignedInteger(ordinal_),
      CBORValue::unsignedInteger(rawValue(kind_)),
      CBORValue::unsignedInteger(rawValue(compression_)),
      CBORValue::unsignedInteger(recordCount_),
      CBORValue::byteString(firstSortKey_),
      CBORValue::byteString(lastSortKey_),
      CBORValue::unsignedInteger(decodedPlaintextByteCount_),
      CBORValue::byteString(decodedPlaintextSHA256_),
  });
}

bool BackupManifestSectionReferenceV1::hasCBORShape(const CBORBorrowedValue& value) {
  if (!CBOR::isArrayOfCount(value, 9)) return false;
  const auto& kind = CBOR::item(value, 2);
  const auto& compression = CBOR::item(value, 3);
  return BackupArtifactReferenceV1::hasCBORShape(CBOR::item(value, 0)) && CBOR::isUnsigned(CBOR::item(value, 1)) &&
         CBOR::isUnsigned(kind) && fromRawValue<BackupManifestSectionKindV1>(CBOR::unsignedInteger(kind)) &&
         CBOR::isUnsigned(compression) &&
         fromRawValue<BackupManifestCompressionV1>(CBOR::unsignedInteger(compression)) &&
         CBOR::isUnsigned(CBOR::item(value, 4)) && CBOR::isByteString(CBOR::item(value, 5)) &&
         CBOR::isByteString(CBOR::item(value, 6)) && CBOR::isUnsigned(CBOR::item(value, 7)) &&
         CBOR::isByteString(CBOR::item(value, 8));
}

std::expected<BackupManifestSectionReferenceV1, BackupGraphV1Error> BackupManifestSectionReferenceV1::fromCBOR(
    const CBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  auto artifact = BackupArtifactReferenceV1::fromCBOR(CBOR::item(value, 0));
  if (!artifact) return std::unexpected(artifact.error());
  return make(std::move(*artifact), CBOR::unsignedInteger(CBOR::item(value, 1)),
              *fromRawValue<BackupManifestSectionKindV1>(CBOR::unsignedInteger(CBOR::item(value, 2))),
              *fromRawValue<BackupManifestCompressionV1>(CBOR::unsignedInteger(CBOR::item(value, 3))),
              CBOR::unsignedInteger(CBOR::item(value, 4)), CBOR::ownedByteString(CBOR::item(value, 5)),
              CBOR::ownedByteString(CBOR::item(value, 6)), CBOR::unsignedInteger(CBOR::item(value, 7)),
              CBOR::ownedByteString(CBOR::item(value, 8)));
}

}  // namespace galdrine::format
