#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordBlobV1.hpp"

#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

bool isWithin(std::size_t byteCount, std::size_t minimum, std::size_t maximum) {
  return byteCount >= minimum && byteCount <= maximum;
}

}  // namespace

std::expected<GaldrineBackupManifestRecordBlobV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestRecordBlobV1::make(
    Bytes sortKey, Bytes canonicalRecord) {
  if (!isWithin(sortKey.size(), Limits::minimumSortKeyByteCount, Limits::maximumSortKeyByteCount) ||
      !isWithin(canonicalRecord.size(), Limits::minimumCanonicalRecordByteCount, Limits::maximumCanonicalRecordByteCount)) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidRecordSet);
  }
  return GaldrineBackupManifestRecordBlobV1(std::move(sortKey), std::move(canonicalRecord));
}

GaldrineBackupManifestRecordBlobV1::GaldrineBackupManifestRecordBlobV1(Bytes sortKey, Bytes canonicalRecord)
    : sortKey_(std::move(sortKey)), canonicalRecord_(std::move(canonicalRecord)) {}

GaldrineCBORValue GaldrineBackupManifestRecordBlobV1::cborValue() const {
  return GaldrineCBORValue::array(
      {GaldrineCBORValue::byteString(sortKey_), GaldrineCBORValue::byteString(canonicalRecord_)});
}

bool GaldrineBackupManifestRecordBlobV1::hasCBORShape(const GaldrineCBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 2) && CBOR::isByteString(CBOR::item(value, 0)) && CBOR::isByteString(CBOR::item(value, 1));
}

std::expected<GaldrineBackupManifestRecordBlobV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestRecordBlobV1::fromCBOR(
    const GaldrineCBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  return make(CBOR::ownedByteString(CBOR::item(value, 0)), CBOR::ownedByteString(CBOR::item(value, 1)));
}
