#include "format/graph/BackupGraphCBORV1.hpp"

#include <string>

#include "format/cbor/DeterministicCBOR.hpp"

namespace galdrine::format {

namespace BackupGraphCBORV1 {

std::expected<CBORBorrowedValue, BackupGraphV1Error> decodeRecordMap(ByteView bytes, const CBORLimits& limits,
                                                                     std::string_view schema, std::uint64_t lastKey) {
  auto decoded = DeterministicCBOR::decodeBorrowed(bytes, limits);
  if (!decoded) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  if (!decoded->hasKeysZeroThrough(lastKey)) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  const auto storedSchema = field(*decoded, 0).asTextString();
  if (!storedSchema || *storedSchema != schema) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  return std::move(*decoded);
}

const CBORBorrowedValue& field(const CBORBorrowedValue& recordMap, std::uint64_t key) {
  return (*recordMap.asMap())[static_cast<std::size_t>(key)].second;
}

const CBORBorrowedValue& item(const CBORBorrowedValue& array, std::size_t index) { return (*array.asArray())[index]; }

bool isByteString(const CBORBorrowedValue& value) { return value.kind() == CBORKind::byteString; }

bool isUnsigned(const CBORBorrowedValue& value) { return value.kind() == CBORKind::unsignedInteger; }

bool isTimestamp(const CBORBorrowedValue& value) {
  return value.kind() == CBORKind::unsignedInteger || value.kind() == CBORKind::negative;
}

bool isArrayOfCount(const CBORBorrowedValue& value, std::size_t count) {
  const auto* items = value.asArray();
  return items != nullptr && items->size() == count;
}

ByteView byteString(const CBORBorrowedValue& value) { return *value.asByteString(); }

Bytes ownedByteString(const CBORBorrowedValue& value) {
  const ByteView bytes = byteString(value);
  return Bytes(bytes.begin(), bytes.end());
}

std::uint64_t unsignedInteger(const CBORBorrowedValue& value) { return *value.asUnsigned(); }

std::expected<std::int64_t, BackupGraphV1Error> timestamp(const CBORBorrowedValue& value) {
  const auto read = value.asSignedInteger();
  if (read) return *read;
  if (read.error() == CBORSignedIntegerFault::outOfRange) {
    return std::unexpected(BackupGraphV1Error::invalidTimestamp);
  }
  return std::unexpected(BackupGraphV1Error::malformedArtifact);
}

std::uint64_t headByteCount(std::uint64_t argument) {
  if (argument < 24) return 1;
  if (argument <= 0xFF) return 2;
  if (argument <= 0xFFFF) return 3;
  if (argument <= 0xFFFF'FFFF) return 5;
  return 9;
}

std::uint64_t stringByteCount(std::uint64_t byteCount) { return headByteCount(byteCount) + byteCount; }

std::expected<Bytes, BackupGraphV1Error> encodeRecordMap(CBORValue::Map fields, std::string_view schema,
                                                         const CBORLimits& limits) {
  fields.insert_or_assign(0, CBORValue::textString(std::string(schema)));
  auto encoded = DeterministicCBOR::encode(CBORValue::map(std::move(fields)), limits);
  if (!encoded) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  return std::move(*encoded);
}

}  // namespace BackupGraphCBORV1

}  // namespace galdrine::format
