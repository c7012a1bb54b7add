#include "GaldrineCryptoPrimitives/GaldrineBackupHeadV1.hpp"

#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 4;

bool hasFieldShapes(const GaldrineCBORBorrowedValue& head) {
  return CBOR::isByteString(CBOR::field(head, 1)) && CBOR::isByteString(CBOR::field(head, 2)) &&
         GaldrineBackupArtifactReferenceV1::hasCBORShape(CBOR::field(head, 3)) && CBOR::isTimestamp(CBOR::field(head, 4));
}

}  // namespace

std::expected<GaldrineBackupHeadV1, GaldrineBackupGraphV1Error> GaldrineBackupHeadV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, GaldrineBackupArtifactReferenceV1 commit,
    std::int64_t createdAtUTCMilliseconds) {
  if (identifier.size() != Limits::identifierByteCount || libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  }
  if (commit.identifier() == identifier) return std::unexpected(GaldrineBackupGraphV1Error::invalidReference);
  return GaldrineBackupHeadV1(std::move(identifier), std::move(libraryDomainIdentifier), std::move(commit),
                              createdAtUTCMilliseconds);
}

GaldrineBackupHeadV1::GaldrineBackupHeadV1(Bytes identifier, Bytes libraryDomainIdentifier,
                                           GaldrineBackupArtifactReferenceV1 commit, std::int64_t createdAtUTCMilliseconds)
    : identifier_(std::move(identifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      commit_(std::move(commit)),
      createdAtUTCMilliseconds_(createdAtUTCMilliseconds) {}

std::expected<Bytes, GaldrineBackupGraphV1Error> GaldrineBackupHeadV1::encoded() const {
  GaldrineCBORValue::Map fields;
  fields.emplace(1, GaldrineCBORValue::byteString(identifier_));
  fields.emplace(2, GaldrineCBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, commit_.cborValue());
  fields.emplace(4, GaldrineCBORValue::signedInteger(createdAtUTCMilliseconds_));
  return CBOR::encodeRecordMap(std::move(fields), GaldrineBackupFormatV1::headSchemaIdentifier, Limits::graphDescriptor);
}

std::expected<GaldrineBackupHeadV1, GaldrineBackupGraphV1Error> GaldrineBackupHeadV1::decode(ByteView plaintext) {
  const auto head =
      CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor, GaldrineBackupFormatV1::headSchemaIdentifier, lastKey);
  if (!head) return std::unexpected(head.error());
  if (!hasFieldShapes(*head)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*head, 4));
  if (!createdAt) return std::unexpected(createdAt.error());
  auto commit = GaldrineBackupArtifactReferenceV1::fromCBOR(CBOR::field(*head, 3));
  if (!commit) return std::unexpected(commit.error());
  return make(CBOR::ownedByteString(CBOR::field(*head, 1)), CBOR::ownedByteString(CBOR::field(*head, 2)),
              std::move(*commit), *createdAt);
}
