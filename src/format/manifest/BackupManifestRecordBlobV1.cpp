#include "format/manifest/BackupManifestRecordBlobV1.hpp"

#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

bool isWithin(std::size_t byteCount, std::size_t minimum, std::size_t maximum) {
  return byteCount >= minimum && byteCount <= maximum;
}

}  // namespace

std::expected<BackupManifestRecordBlobV1, BackupGraphV1Error> BackupManifestRecordBlobV1::make(Bytes sortKey,
                                                                                               Bytes canonicalRecord) {
  if (!isWithin(sortKey.size(), Limits::minimumSortKeyByteCount, Limits::maximumSortKeyByteCount) ||
      !isWithin(canonicalRecord.size(), Limits::minimumCanonicalRecordByteCount,
                Limits::maximumCanonicalRecordByteCount)) {
    return std::unexpected(BackupGraphV1Error::invalidRecordSet);
  }
  return BackupManifestRecordBlobV1(std::move(sortKey), std::move(canonicalRecord));
}

BackupManifestRecordBlobV1::BackupManifestRecordBlobV1(Bytes sortKey, Bytes canonicalRecord)
    : sortKey_(std::move(sortKey)), canonicalRecord_(std::move(canonicalRecord)) {}

CBORValue BackupManifestRecordBlobV1::cborValue() const {
  return CBORValue::array({CBORValue::byteString(sortKey_), CBORValue::byteString(canonicalRecord_)});
}

bool BackupManifestRecordBlobV1::hasCBORShape(const CBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 2) && CBOR::isByteString(CBOR::item(value, 0)) &&
         CBOR::isByteString(CBOR::item(value, 1));
}

std::expected<BackupManifestRecordBlobV1, BackupGraphV1Error> BackupManifestRecordBlobV1::fromCBOR(
    const CBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  return make(CBOR::ownedByteString(CBOR::item(value, 0)), CBOR::ownedByteString(CBOR::item(value, 1)));
}

}  // namespace galdrine::format
