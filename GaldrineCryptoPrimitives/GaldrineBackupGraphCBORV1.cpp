#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"

#include <string>

#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"

namespace GaldrineBackupGraphCBORV1 {

std::expected<GaldrineCBORBorrowedValue, GaldrineBackupGraphV1Error> decodeRecordMap(ByteView bytes,
                                                                                    const GaldrineCBORLimits& limits,
                                                                                    std::string_view schema,
                                                                                    std::uint64_t lastKey) {
  auto decoded = GaldrineDeterministicCBOR::decodeBorrowed(bytes, limits);
  if (!decoded) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  if (!decoded->hasKeysZeroThrough(lastKey)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  const auto storedSchema = field(*decoded, 0).asTextString();
  if (!storedSchema || *storedSchema != schema) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  return std::move(*decoded);
}

const GaldrineCBORBorrowedValue& field(const GaldrineCBORBorrowedValue& recordMap, std::uint64_t key) {
  return (*recordMap.asMap())[static_cast<std::size_t>(key)].second;
}

const GaldrineCBORBorrowedValue& item(const GaldrineCBORBorrowedValue& array, std::size_t index) {
  return (*array.asArray())[index];
}

bool isByteString(const GaldrineCBORBorrowedValue& value) { return value.kind() == GaldrineCBORKind::byteString; }

bool isUnsigned(const GaldrineCBORBorrowedValue& value) { return value.kind() == GaldrineCBORKind::unsignedInteger; }

bool isTimestamp(const GaldrineCBORBorrowedValue& value) {
  return value.kind() == GaldrineCBORKind::unsignedInteger || value.kind() == GaldrineCBORKind::negative;
}

bool isArrayOfCount(const GaldrineCBORBorrowedValue& value, std::size_t count) {
  const auto* items = value.asArray();
  return items != nullptr && items->size() == count;
}

ByteView byteString(const GaldrineCBORBorrowedValue& value) { return *value.asByteString(); }

Bytes ownedByteString(const GaldrineCBORBorrowedValue& value) {
  const ByteView bytes = byteString(value);
  return Bytes(bytes.begin(), bytes.end());
}

std::uint64_t unsignedInteger(const GaldrineCBORBorrowedValue& value) { return *value.asUnsigned(); }

std::expected<std::int64_t, GaldrineBackupGraphV1Error> timestamp(const GaldrineCBORBorrowedValue& value) {
  const auto read = value.asSignedInteger();
  if (read) return *read;
  if (read.error() == GaldrineCBORSignedIntegerFault::outOfRange) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidTimestamp);
  }
  return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
}

std::uint64_t headByteCount(std::uint64_t argument) {
  if (argument < 24) return 1;
  if (argument <= 0xFF) return 2;
  if (argument <= 0xFFFF) return 3;
  if (argument <= 0xFFFF'FFFF) return 5;
  return 9;
}

std::uint64_t stringByteCount(std::uint64_t byteCount) { return headByteCount(byteCount) + byteCount; }

std::expected<Bytes, GaldrineBackupGraphV1Error> encodeRecordMap(GaldrineCBORValue::Map fields, std::string_view schema,
                                                                 const GaldrineCBORLimits& limits) {
  fields.insert_or_assign(0, GaldrineCBORValue::textString(std::string(schema)));
  auto encoded = GaldrineDeterministicCBOR::encode(GaldrineCBORValue::map(std::move(fields)), limits);
  if (!encoded) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  return std::move(*encoded);
}

}  // namespace GaldrineBackupGraphCBORV1
