#include "format/graph/BackupSnapshotV1.hpp"

#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 9;

bool hasFieldShapes(const CBORBorrowedValue& snapshot) {
  return CBOR::isByteString(CBOR::field(snapshot, 1)) && CBOR::isByteString(CBOR::field(snapshot, 2)) &&
         CBOR::isTimestamp(CBOR::field(snapshot, 3)) &&
         BackupArtifactReferenceV1::hasCBORShape(CBOR::field(snapshot, 4)) &&
         CBOR::isByteString(CBOR::field(snapshot, 5)) && CBOR::isByteString(CBOR::field(snapshot, 6)) &&
         BackupManifestCountsV1::hasCBORShape(CBOR::field(snapshot, 7)) && CBOR::isUnsigned(CBOR::field(snapshot, 8)) &&
         CBOR::isUnsigned(CBOR::field(snapshot, 9));
}

}  // namespace

std::expected<BackupSnapshotV1, BackupGraphV1Error> BackupSnapshotV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
    BackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
    BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount, std::uint64_t encryptedPayloadByteCount) {
  if (identifier.size() != Limits::identifierByteCount ||
      libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  }
  if (manifestSectionSetSHA256.size() != Limits::digestByteCount ||
      requiredPayloadSetSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidDigest);
  }
  if (logicalPlaintextByteCount > Limits::maximumByteTotal || encryptedPayloadByteCount > Limits::maximumByteTotal) {
    return std::unexpected(BackupGraphV1Error::invalidCount);
  }
  return BackupSnapshotV1(std::move(identifier), std::move(libraryDomainIdentifier), createdAtUTCMilliseconds,
                          std::move(manifest), std::move(manifestSectionSetSHA256), std::move(requiredPayloadSetSHA256),
                          std::move(counts), logicalPlaintextByteCount, encryptedPayloadByteCount);
}

BackupSnapshotV1::BackupSnapshotV1(Bytes identifier, Bytes libraryDomainIdentifier,
                                   std::int64_t createdAtUTCMilliseconds, BackupArtifactReferenceV1 manifest,
                                   Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
                                   BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount,
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

std::expected<Bytes, BackupGraphV1Error> BackupSnapshotV1::encoded() const {
  CBORValue::Map fields;
  fields.emplace(1, CBORValue::byteString(identifier_));
  fields.emplace(2, CBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, CBORValue::signedInteger(createdAtUTCMilliseconds_));
  fields.emplace(4, manifest_.cborValue());
  fields.emplace(5, CBORValue::byteString(manifestSectionSetSHA256_));
  fields.emplace(6, CBORValue::byteString(requiredPayloadSetSHA256_));
  fields.emplace(7, counts_.cborValue());
  fields.emplace(8, CBORValue::unsignedInteger(logicalPlaintextByteCount_));
  fields.emplace(9, CBORValue::unsignedInteger(encryptedPayloadByteCount_));
  return CBOR::encodeRecordMap(std::move(fields), BackupFormatV1::snapshotSchemaIdentifier, Limits::graphDescriptor);
}

std::expected<BackupSnapshotV1, BackupGraphV1Error> BackupSnapshotV1::decode(ByteView plaintext) {
  const auto snapshot =
      CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor, BackupFormatV1::snapshotSchemaIdentifier, lastKey);
  if (!snapshot) return std::unexpected(snapshot.error());
  if (!hasFieldShapes(*snapshot)) return std::unexpected(BackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*snapshot, 3));
  if (!createdAt) return std::unexpected(createdAt.error());
  auto manifest = BackupArtifactReferenceV1::fromCBOR(CBOR::field(*snapshot, 4));
  if (!manifest) return std::unexpected(manifest.error());
  auto counts = BackupManifestCountsV1::fromCBOR(CBOR::field(*snapshot, 7));
  if (!counts) return std::unexpected(counts.error());
  return make(CBOR::ownedByteString(CBOR::field(*snapshot, 1)), CBOR::ownedByteString(CBOR::field(*snapshot, 2)),
              *createdAt, std::move(*manifest), CBOR::ownedByteString(CBOR::field(*snapshot, 5)),
              CBOR::ownedByteString(CBOR::field(*snapshot, 6)), std::move(*counts),
              CBOR::unsignedInteger(CBOR::field(*snapshot, 8)), CBOR::unsignedInteger(CBOR::field(*snapshot, 9)));
}

}  // namespace galdrine::format
