#include "GaldrineCryptoPrimitives/GaldrineBackupSnapshotV1.hpp"

#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 9;

bool hasFieldShapes(const GaldrineCBORBorrowedValue& snapshot) {
  return CBOR::isByteString(CBOR::field(snapshot, 1)) && CBOR::isByteString(CBOR::field(snapshot, 2)) &&
         CBOR::isTimestamp(CBOR::field(snapshot, 3)) &&
         GaldrineBackupArtifactReferenceV1::hasCBORShape(CBOR::field(snapshot, 4)) &&
         CBOR::isByteString(CBOR::field(snapshot, 5)) && CBOR::isByteString(CBOR::field(snapshot, 6)) &&
         GaldrineBackupManifestCountsV1::hasCBORShape(CBOR::field(snapshot, 7)) &&
         CBOR::isUnsigned(CBOR::field(snapshot, 8)) && CBOR::isUnsigned(CBOR::field(snapshot, 9));
}

}  // namespace

std::expected<GaldrineBackupSnapshotV1, GaldrineBackupGraphV1Error> GaldrineBackupSnapshotV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
    GaldrineBackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
    GaldrineBackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount,
    std::uint64_t encryptedPayloadByteCount) {
  if (identifier.size() != Limits::identifierByteCount || libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  }
  if (manifestSectionSetSHA256.size() != Limits::digestByteCount ||
      requiredPayloadSetSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidDigest);
  }
  if (logicalPlaintextByteCount > Limits::maximumByteTotal || encryptedPayloadByteCount > Limits::maximumByteTotal) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidCount);
  }
  return GaldrineBackupSnapshotV1(std::move(identifier), std::move(libraryDomainIdentifier), createdAtUTCMilliseconds,
                                  std::move(manifest), std::move(manifestSectionSetSHA256),
                                  std::move(requiredPayloadSetSHA256), std::move(counts), logicalPlaintextByteCount,
                                  encryptedPayloadByteCount);
}

GaldrineBackupSnapshotV1::GaldrineBackupSnapshotV1(Bytes identifier, Bytes libraryDomainIdentifier,
                                                   std::int64_t createdAtUTCMilliseconds,
                                                   GaldrineBackupArtifactReferenceV1 manifest,
                                                   Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
                                                   GaldrineBackupManifestCountsV1 counts,
                                                   std::uint64_t logicalPlaintextByteCount,
                                                   std::uint64_t encryptedPayloadByteCount)
    : identifier_(std::move(identifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      createdAtUTCMilliseconds_(createdAtUTCMilliseconds),
      manifest_(std::move(manifest)),
      manifestSectionSetSHA256_(std::move(manifestSectionSetSHA256)),
      requiredPayloadSetSHA256_(std::move(requiredPayloadSetSHA256)),
      counts_(std::move(counts)),
      logicalPlaintextByteCount_(logicalPlaintextByteCount),
      encryptedPayloadByteCount_(encryptedPayloadByteCount) {}

std::expected<Bytes, GaldrineBackupGraphV1Error> GaldrineBackupSnapshotV1::encoded() const {
  GaldrineCBORValue::Map fields;
  fields.emplace(1, GaldrineCBORValue::byteString(identifier_));
  fields.emplace(2, GaldrineCBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, GaldrineCBORValue::signedInteger(createdAtUTCMilliseconds_));
  fields.emplace(4, manifest_.cborValue());
  fields.emplace(5, GaldrineCBORValue::byteString(manifestSectionSetSHA256_));
  fields.emplace(6, GaldrineCBORValue::byteString(requiredPayloadSetSHA256_));
  fields.emplace(7, counts_.cborValue());
  fields.emplace(8, GaldrineCBORValue::unsignedInteger(logicalPlaintextByteCount_));
  fields.emplace(9, GaldrineCBORValue::unsignedInteger(encryptedPayloadByteCount_));
  return CBOR::encodeRecordMap(std::move(fields), GaldrineBackupFormatV1::snapshotSchemaIdentifier,
                               Limits::graphDescriptor);
}

std::expected<GaldrineBackupSnapshotV1, GaldrineBackupGraphV1Error> GaldrineBackupSnapshotV1::decode(ByteView plaintext) {
  const auto snapshot = CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor,
                                              GaldrineBackupFormatV1::snapshotSchemaIdentifier, lastKey);
  if (!snapshot) return std::unexpected(snapshot.error());
  if (!hasFieldShapes(*snapshot)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*snapshot, 3));
  if (!createdAt) return std::unexpected(createdAt.error());
  auto manifest = GaldrineBackupArtifactReferenceV1::fromCBOR(CBOR::field(*snapshot, 4));
  if (!manifest) return std::unexpected(manifest.error());
  auto counts = GaldrineBackupManifestCountsV1::fromCBOR(CBOR::field(*snapshot, 7));
  if (!counts) return std::unexpected(counts.error());
  return make(CBOR::ownedByteString(CBOR::field(*snapshot, 1)), CBOR::ownedByteString(CBOR::field(*snapshot, 2)),
              *createdAt, std::move(*manifest), CBOR::ownedByteString(CBOR::field(*snapshot, 5)),
              CBOR::ownedByteString(CBOR::field(*snapshot, 6)), std::move(*counts),
              CBOR::unsignedInteger(CBOR::field(*snapshot, 8)), CBOR::unsignedInteger(CBOR::field(*snapshot, 9)));
}
