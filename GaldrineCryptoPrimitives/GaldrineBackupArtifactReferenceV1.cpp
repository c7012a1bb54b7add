#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"

#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

std::expected<GaldrineBackupArtifactReferenceV1, GaldrineBackupGraphV1Error> GaldrineBackupArtifactReferenceV1::make(
    Bytes identifier, std::uint64_t frameByteCount, Bytes frameSHA256, std::uint64_t plaintextByteCount,
    Bytes plaintextSHA256) {
  if (identifier.size() != Limits::identifierByteCount) return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  if (frameByteCount == 0 || plaintextByteCount == 0) return std::unexpected(GaldrineBackupGraphV1Error::invalidReference);
  if (frameSHA256.size() != Limits::digestByteCount || plaintextSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidDigest);
  }
  return GaldrineBackupArtifactReferenceV1(std::move(identifier), frameByteCount, std::move(frameSHA256),
                                           plaintextByteCount, std::move(plaintextSHA256));
}

GaldrineBackupArtifactReferenceV1::GaldrineBackupArtifactReferenceV1(Bytes identifier, std::uint64_t frameByteCount,
                                                                     Bytes frameSHA256, std::uint64_t plaintextByteCount,
                                                                     Bytes plaintextSHA256)
    : identifier_(std::move(identifier)),
      frameByteCount_(frameByteCount),
      frameSHA256_(std::move(frameSHA256)),
      plaintextByteCount_(plaintextByteCount),
      plaintextSHA256_(std::move(plaintextSHA256)) {}

GaldrineCBORValue GaldrineBackupArtifactReferenceV1::cborValue() const {
  return GaldrineCBORValue::array({
      GaldrineCBORValue::byteString(identifier_),
      GaldrineCBORValue::unsignedInteger(frameByteCount_),
      GaldrineCBORValue::byteString(frameSHA256_),
      GaldrineCBORValue::unsignedInteger(plaintextByteCount_),
      GaldrineCBORValue::byteString(plaintextSHA256_),
  });
}

bool GaldrineBackupArtifactReferenceV1::hasCBORShape(const GaldrineCBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 5) && CBOR::isByteString(CBOR::item(value, 0)) && CBOR::isUnsigned(CBOR::item(value, 1)) &&
         CBOR::isByteString(CBOR::item(value, 2)) && CBOR::isUnsigned(CBOR::item(value, 3)) &&
         CBOR::isByteString(CBOR::item(value, 4));
}

std::expected<GaldrineBackupArtifactReferenceV1, GaldrineBackupGraphV1Error> GaldrineBackupArtifactReferenceV1::fromCBOR(
    const GaldrineCBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  return make(CBOR::ownedByteString(CBOR::item(value, 0)), CBOR::unsignedInteger(CBOR::item(value, 1)),
              CBOR::ownedByteString(CBOR::item(value, 2)), CBOR::unsignedInteger(CBOR::item(value, 3)),
              CBOR::ownedByteString(CBOR::item(value, 4)));
}
