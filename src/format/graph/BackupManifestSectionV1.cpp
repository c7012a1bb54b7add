#include "format/graph/BackupManifestSectionV1.hpp"

#include <algorithm>
#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 7;

bool sortKeysStrictlyAscend(const std::vector<BackupManifestRecordBlobV1>& records) {
  return std::ranges::adjacent_find(records, [](const auto& earlier, const auto& later) {
           return !ByteOrder::precedes(earlier.sortKey(), later.sortKey());
         }) == records.end();
}

// hasFieldShapes checks the kind of every field, the ranges of the two enumerations and the
// shape of every record blob, before any rule looks at a value.
bool hasFieldShapes(const CBORBorrowedValue& section) {
  const auto& kind = CBOR::field(section, 5);
  const auto& compression = CBOR::field(section, 6);
  const auto* records = CBOR::field(section, 7).asArray();
  return CBOR::isByteString(CBOR::field(section, 1)) && CBOR::isByteString(CBOR::field(section, 2)) &&
         CBOR::isByteString(CBOR::field(section, 3)) && CBOR::isUnsigned(CBOR::field(section, 4)) &&
         CBOR::isUnsigned(kind) && fromRawValue<BackupManifestSectionKindV1>(CBOR::unsignedInteger(kind)) &&
         CBOR::isUnsigned(compression) &&
         fromRawValue<BackupManifestCompressionV1>(CBOR::unsignedInteger(compression)) && records != nullptr &&
         std::ranges::all_of(*records, BackupManifestRecordBlobV1::hasCBORShape);
}

}  // namespace

std::expected<BackupManifestSectionV1, BackupGraphV1Error> BackupManifestSectionV1::make(
    Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier, std::uint64_t ordinal,
    BackupManifestSectionKindV1 kind, BackupManifestCompressionV1 compression,
    std::vector<BackupManifestRecordBlobV1> records) {
  if (identifier.size() != Limits::identifierByteCount || manifestIdentifier.size() != Limits::identifierByteCount ||
      libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  }
  if (ordinal > Limits::maximumSectionOrdinal || records.empty() ||
      records.size() > Limits::maximumSectionRecordCount) {
    return std::unexpected(BackupGraphV1Error::invalidRecordSet);
  }
  if (!sortKeysStrictlyAscend(records)) return std::unexpected(BackupGraphV1Error::invalidRecordSet);
  if (compression != BackupManifestCompressionV1::none) {
    return std::unexpected(BackupGraphV1Error::unsupportedCompression);
  }
  return BackupManifestSectionV1(std::move(identifier), std::move(manifestIdentifier),
                                 std::move(libraryDomainIdentifier), ordinal, kind, compression, std::move(records));
}

BackupManifestSectionV1::BackupManifestSectionV1(Bytes identifier, Bytes manifestIdentifier,
                                                 Bytes libraryDomainIdentifier, std::uint64_t ordinal,
                                                 BackupManifestSectionKindV1 kind,
                                                 BackupManifestCompressionV1 compression,
                                                 std::vector<BackupManifestRecordBlobV1> records)
    : identifier_(std::move(identifier)),
      manifestIdentifier_(std::move(manifestIdentifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      ordinal_(ordinal),
      kind_(kind),
      compression_(compression),
      records_(std::move(records)) {}

std::expected<Bytes, BackupGraphV1Error> BackupManifestSectionV1::encoded() const {
  CBORValue::Array records;
  records.reserve(records_.size());
  for (const auto& record : records_) records.push_back(record.cborValue());
  CBORValue::Map fields;
  fields.emplace(1, CBORValue::byteString(identifier_));
  fields.emplace(2, CBORValue::byteString(manifestIdentifier_));
  fields.emplace(3, CBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(4, CBORValue::unsignedInteger(ordinal_));
  fields.emplace(5, CBORValue::unsignedInteger(rawValue(kind_)));
  fields.emplace(6, CBORValue::unsignedInteger(rawValue(compression_)));
  fields.emplace(7, CBORValue::array(std::move(records)));
  return CBOR::encodeRecordMap(std::move(fields), BackupFormatV1::manifestSectionSchemaIdentifier,
                               Limits::manifestSection);
}

std::uint64_t BackupManifestSectionV1::encodedByteCount() const {
  // Every key (0 to 7) and every small unsigned value below 24 takes a single byte.
  std::uint64_t byteCount = CBOR::headByteCount(lastKey + 1) + (lastKey + 1);
  byteCount += CBOR::stringByteCount(BackupFormatV1::manifestSectionSchemaIdentifier.size());
  byteCount += CBOR::stringByteCount(identifier_.size()) + CBOR::stringByteCount(manifestIdentifier_.size()) +
               CBOR::stringByteCount(libraryDomainIdentifier_.size());
  byteCount += CBOR::headByteCount(ordinal_) + CBOR::headByteCount(rawValue(kind_)) +
               CBOR::headByteCount(rawValue(compression_));
  byteCount += CBOR::headByteCount(records_.size());
  for (const auto& record : records_) {
    byteCount += CBOR::headByteCount(2) + CBOR::stringByteCount(record.sortKey().size()) +
                 CBOR::stringByteCount(record.canonicalRecord().size());
  }
  return byteCount;
}

std::expected<BackupManifestSectionV1, BackupGraphV1Error> BackupManifestSectionV1::decode(ByteView plaintext) {
  const auto section = CBOR::decodeRecordMap(plaintext, Limits::manifestSection,
                                             BackupFormatV1::manifestSectionSchemaIdentifier, lastKey);
  if (!section) return std::unexpected(section.error());
  if (!hasFieldShapes(*section)) return std::unexpected(BackupGraphV1Error::malformedArtifact);

  const auto& storedRecords = *CBOR::field(*section, 7).asArray();
  std::vector<BackupManifestRecordBlobV1> records;
  records.reserve(storedRecords.size());
  for (const auto& storedRecord : storedRecords) {
    auto record = BackupManifestRecordBlobV1::fromCBOR(storedRecord);
    if (!record) return std::unexpected(record.error());
    records.push_back(std::move(*record));
  }
  return make(CBOR::ownedByteString(CBOR::field(*section, 1)), CBOR::ownedByteString(CBOR::field(*section, 2)),
              CBOR::ownedByteString(CBOR::field(*section, 3)), CBOR::unsignedInteger(CBOR::field(*section, 4)),
              *fromRawValue<BackupManifestSectionKindV1>(CBOR::unsignedInteger(CBOR::field(*section, 5))),
              *fromRawValue<BackupManifestCompressionV1>(CBOR::unsignedInteger(CBOR::field(*section, 6))),
              std::move(records));
}

}  // namespace galdrine::format
