#include "format/graph/BackupHeadV1.hpp"

#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 4;

bool hasFieldShapes(const CBORBorrowedValue& head) {
  return CBOR::isByteString(CBOR::field(head, 1)) && CBOR::isByteString(CBOR::field(head, 2)) &&
         BackupArtifactReferenceV1::hasCBORShape(CBOR::field(head, 3)) && CBOR::isTimestamp(CBOR::field(head, 4));
}

}  // namespace

std::expected<BackupHeadV1, BackupGraphV1Error> BackupHeadV1::make(Bytes identifier, Bytes libraryDomainIdentifier,
                                                                   BackupArtifactReferenceV1 commit,
                                                                   std::int64_t createdAtUTCMilliseconds) {
  if (identifier.size() != Limits::identifierByteCount ||
      libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  }
  if (commit.identifier() == identifier) return std::unexpected(BackupGraphV1Error::invalidReference);
  return BackupHeadV1(std::move(identifier), std::move(libraryDomainIdentifier), std::move(commit),
                      createdAtUTCMilliseconds);
}

BackupHeadV1::BackupHeadV1(Bytes identifier, Bytes libraryDomainIdentifier, BackupArtifactReferenceV1 commit,
                           std::int64_t createdAtUTCMilliseconds)
    : identifier_(std::move(identifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      commit_(std::move(commit)),
      createdAtUTCMilliseconds_(createdAtUTCMilliseconds) {}

std::expected<Bytes, BackupGraphV1Error> BackupHeadV1::encoded() const {
  CBORValue::Map fields;
  fields.emplace(1, CBORValue::byteString(identifier_));
  fields.emplace(2, CBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, commit_.cborValue());
  fields.emplace(4, CBORValue::signedInteger(createdAtUTCMilliseconds_));
  return CBOR::encodeRecordMap(std::move(fields), BackupFormatV1::headSchemaIdentifier, Limits::graphDescriptor);
}

std::expected<BackupHeadV1, BackupGraphV1Error> BackupHeadV1::decode(ByteView plaintext) {
  const auto head =
      CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor, BackupFormatV1::headSchemaIdentifier, lastKey);
  if (!head) return std::unexpected(head.error());
  if (!hasFieldShapes(*head)) return std::unexpected(BackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*head, 4));
  if (!createdAt) return std::unexpected(createdAt.error());
  auto commit = BackupArtifactReferenceV1::fromCBOR(CBOR::field(*head, 3));
  if (!commit) return std::unexpected(commit.error());
  return make(CBOR::ownedByteString(CBOR::field(*head, 1)), CBOR::ownedByteString(CBOR::field(*head, 2)),
              std::move(*commit), *createdAt);
}

}  // namespace galdrine::format
