#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionV1.hpp"

#include <algorithm>
#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 7;

bool sortKeysStrictlyAscend(const std::vector<GaldrineBackupManifestRecordBlobV1>& records) {
  return std::ranges::adjacent_find(records, [](const auto& earlier, const auto& later) {
           return !GaldrineByteOrder::precedes(earlier.sortKey(), later.sortKey());
         }) == records.end();
}

// hasFieldShapes checks the kind of every field, the ranges of the two enumerations and the
// shape of every record blob, before any rule looks at a value.
bool hasFieldShapes(const GaldrineCBORBorrowedValue& section) {
  const auto& kind = CBOR::field(section, 5);
  const auto& compression = CBOR::field(section, 6);
  const auto* records = CBOR::field(section, 7).asArray();
  return CBOR::isByteString(CBOR::field(section, 1)) && CBOR::isByteString(CBOR::field(section, 2)) &&
         CBOR::isByteString(CBOR::field(section, 3)) && CBOR::isUnsigned(CBOR::field(section, 4)) &&
         CBOR::isUnsigned(kind) && fromRawValue<GaldrineBackupManifestSectionKindV1>(CBOR::unsignedInteger(kind)) &&
         CBOR::isUnsigned(compression) &&
         fromRawValue<GaldrineBackupManifestCompressionV1>(CBOR::unsignedInteger(compression)) && records != nullptr &&
         std::ranges::all_of(*records, GaldrineBackupManifestRecordBlobV1::hasCBORShape);
}

}  // namespace

std::expected<GaldrineBackupManifestSectionV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestSectionV1::make(
    Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier, std::uint64_t ordinal,
    GaldrineBackupManifestSectionKindV1 kind, GaldrineBackupManifestCompressionV1 compression,
    std::vector<GaldrineBackupManifestRecordBlobV1> records) {
  if (identifier.size() != Limits::identifierByteCount || manifestIdentifier.size() != Limits::identifierByteCount ||
      libraryDomainIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  }
  if (ordinal > Limits::maximumSectionOrdinal || records.empty() || records.size() > Limits::maximumSectionRecordCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidRecordSet);
  }
  if (!sortKeysStrictlyAscend(records)) return std::unexpected(GaldrineBackupGraphV1Error::invalidRecordSet);
  if (compression != GaldrineBackupManifestCompressionV1::none) {
    return std::unexpected(GaldrineBackupGraphV1Error::unsupportedCompression);
  }
  return GaldrineBackupManifestSectionV1(std::move(identifier), std::move(manifestIdentifier),
                                         std::move(libraryDomainIdentifier), ordinal, kind, compression,
                                         std::move(records));
}

GaldrineBackupManifestSectionV1::GaldrineBackupManifestSectionV1(Bytes identifier, Bytes manifestIdentifier,
                                                                 Bytes libraryDomainIdentifier, std::uint64_t ordinal,
                                                                 GaldrineBackupManifestSectionKindV1 kind,
                                                                 GaldrineBackupManifestCompressionV1 compression,
                                                                 std::vector<GaldrineBackupManifestRecordBlobV1> records)
    : identifier_(std::move(identifier)),
      manifestIdentifier_(std::move(manifestIdentifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      ordinal_(ordinal),
      kind_(kind),
      compression_(compression),
      records_(std::move(records)) {}

std::expected<Bytes, GaldrineBackupGraphV1Error> GaldrineBackupManifestSectionV1::encoded() const {
  GaldrineCBORValue::Array records;
  records.reserve(records_.size());
  for (const auto& record : records_) records.push_back(record.cborValue());
  GaldrineCBORValue::Map fields;
  fields.emplace(1, GaldrineCBORValue::byteString(identifier_));
  fields.emplace(2, GaldrineCBORValue::byteString(manifestIdentifier_));
  fields.emplace(3, GaldrineCBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(4, GaldrineCBORValue::unsignedInteger(ordinal_));
  fields.emplace(5, GaldrineCBORValue::unsignedInteger(rawValue(kind_)));
  fields.emplace(6, GaldrineCBORValue::unsignedInteger(rawValue(compression_)));
  fields.emplace(7, GaldrineCBORValue::array(std::move(records)));
  return CBOR::encodeRecordMap(std::move(fields), GaldrineBackupFormatV1::manifestSectionSchemaIdentifier,
                               Limits::manifestSection);
}

std::uint64_t GaldrineBackupManifestSectionV1::encodedByteCount() const {
  // Every key (0 to 7) and every small unsigned value below 24 takes a single byte.
  std::uint64_t byteCount = CBOR::headByteCount(lastKey + 1) + (lastKey + 1);
  byteCount += CBOR::stringByteCount(GaldrineBackupFormatV1::manifestSectionSchemaIdentifier.size());
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

std::expected<GaldrineBackupManifestSectionV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestSectionV1::decode(
    ByteView plaintext) {
  const auto section = CBOR::decodeRecordMap(plaintext, Limits::manifestSection,
                                             GaldrineBackupFormatV1::manifestSectionSchemaIdentifier, lastKey);
  if (!section) return std::unexpected(section.error());
  if (!hasFieldShapes(*section)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);

  const auto& storedRecords = *CBOR::field(*section, 7).asArray();
  std::vector<GaldrineBackupManifestRecordBlobV1> records;
  records.reserve(storedRecords.size());
  for (const auto& storedRecord : storedRecords) {
    auto record = GaldrineBackupManifestRecordBlobV1::fromCBOR(storedRecord);
    if (!record) return std::unexpected(record.error());
    records.push_back(std::move(*record));
  }
  return make(CBOR::ownedByteString(CBOR::field(*section, 1)), CBOR::ownedByteString(CBOR::field(*section, 2)),
              CBOR::ownedByteString(CBOR::field(*section, 3)), CBOR::unsignedInteger(CBOR::field(*section, 4)),
              *fromRawValue<GaldrineBackupManifestSectionKindV1>(CBOR::unsignedInteger(CBOR::field(*section, 5))),
              *fromRawValue<GaldrineBackupManifestCompressionV1>(CBOR::unsignedInteger(CBOR::field(*section, 6))),
              std::move(records));
}
