#include "format/graph/BackupArtifactReferenceV1.hpp"

#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

std::expected<BackupArtifactReferenceV1, BackupGraphV1Error> BackupArtifactReferenceV1::make(
    Bytes identifier, std::uint64_t frameByteCount, Bytes frameSHA256, std::uint64_t plaintextByteCount,
    Bytes plaintextSHA256) {
  if (identifier.size() != Limits::identifierByteCount) return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  if (frameByteCount == 0 || plaintextByteCount == 0) return std::unexpected(BackupGraphV1Error::invalidReference);
  if (frameSHA256.size() != Limits::digestByteCount || plaintextSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidDigest);
  }
  return BackupArtifactReferenceV1(std::move(identifier), frameByteCount, std::move(frameSHA256), plaintextByteCount,
                                   std::move(plaintextSHA256));
}

BackupArtifactReferenceV1::BackupArtifactReferenceV1(Bytes identifier, std::uint64_t frameByteCount, Bytes frameSHA256,
                                                     std::uint64_t plaintextByteCount, Bytes plaintextSHA256)
    : identifier_(std::move(identifier)),
      frameByteCount_(frameByteCount),
      frameSHA256_(std::move(frameSHA256)),
      plaintextByteCount_(plaintextByteCount),
      plaintextSHA256_(std::move(plaintextSHA256)) {}

CBORValue BackupArtifactReferenceV1::cborValue() const {
  return CBORValue::array({
      CBORValue::byteString(identifier_),
      CBORValue::unsignedInteger(frameByteCount_),
      CBORValue::byteString(frameSHA256_),
      CBORValue::unsignedInteger(plaintextByteCount_),
      CBORValue::byteString(plaintextSHA256_),
  });
}

bool BackupArtifactReferenceV1::hasCBORShape(const CBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 5) && CBOR::isByteString(CBOR::item(value, 0)) &&
         CBOR::isUnsigned(CBOR::item(value, 1)) && CBOR::isByteString(CBOR::item(value, 2)) &&
         CBOR::isUnsigned(CBOR::item(value, 3)) && CBOR::isByteString(CBOR::item(value, 4));
}

std::expected<BackupArtifactReferenceV1, BackupGraphV1Error> BackupArtifactReferenceV1::fromCBOR(
    const CBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  return make(CBOR::ownedByteString(CBOR::item(value, 0)), CBOR::unsignedInteger(CBOR::item(value, 1)),
              CBOR::ownedByteString(CBOR::item(value, 2)), CBOR::unsignedInteger(CBOR::item(value, 3)),
              CBOR::ownedByteString(CBOR::item(value, 4)));
}

}  // namespace galdrine::format
