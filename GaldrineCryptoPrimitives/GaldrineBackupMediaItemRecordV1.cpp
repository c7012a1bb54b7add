#include "GaldrineCryptoPrimitives/GaldrineBackupMediaItemRecordV1.hpp"

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"
#include "GaldrinePlatform/GaldrineUTF8.hpp"

using Record = GaldrineBackupMediaItemRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

namespace {

// Only sources that never had a file name may leave it empty.
bool mayLackFilename(GaldrineBackupMediaSourceTypeV1 sourceType) {
  return sourceType == GaldrineBackupMediaSourceTypeV1::shareExtension ||
         sourceType == GaldrineBackupMediaSourceTypeV1::privateCamera;
}

bool hasValidFilename(const Record::Fields& fields) {
  if (fields.originalFilename.empty() && !mayLackFilename(fields.sourceType)) return false;
  return fields.originalFilename.size() <= Record::maximumOriginalFilenameByteCount &&
         GaldrineUTF8::isValid(fields.originalFilename);
}

bool hasValidTimeZone(std::optional<std::int64_t> seconds) {
  return !seconds || (*seconds >= -Record::maximumTimeZoneSeconds && *seconds <= Record::maximumTimeZoneSeconds);
}

}  // namespace

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  if (!hasValidFilename(fields) || !hasValidTimeZone(fields.displayTimeZoneSeconds)) return std::unexpected(Error::invalidValue);
  const bool trashed = fields.lifecycle == GaldrineBackupMediaLifecycleV1::trash;
  if (fields.trashDateUTCMilliseconds.has_value() != trashed) return std::unexpected(Error::invalidValue);
  auto resourceIdentifiers = GaldrineBackupManifestFieldRulesV1::ascendingIdentifiers(
      fields.resourceIdentifiers, GaldrineBackupManifestFieldRulesV1::maximumResourceIdentifierCount);
  if (!resourceIdentifiers || resourceIdentifiers->empty()) return std::unexpected(Error::invalidValue);

  Record record;
  record.identifier_ = *identifier;
  record.kind_ = fields.kind;
  record.displayDateUTCMilliseconds_ = fields.displayDateUTCMilliseconds;
  record.displayTimeZoneSeconds_ = fields.displayTimeZoneSeconds;
  record.dateSource_ = fields.dateSource;
  record.importDateUTCMilliseconds_ = fields.importDateUTCMilliseconds;
  record.originalFilename_ = fields.originalFilename;
  record.favorite_ = fields.favorite;
  record.lifecycle_ = fields.lifecycle;
  record.trashDateUTCMilliseconds_ = fields.trashDateUTCMilliseconds;
  record.sourceType_ = fields.sourceType;
  record.entitlementCounted_ = fields.entitlementCounted;
  record.resourceIdentifiers_ = std::move(*resourceIdentifiers);
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      GaldrineBackupManifestFieldReaderV1::forRecord(faults, value, GaldrineBackupFormatV1::manifestItemRecordSchemaIdentifier, 13);
  const std::vector<ByteView> resourceIdentifiers = reader.byteStrings(13);
  const Fields fields{
      .identifier = reader.bytes(1),
      .kind = reader.enumeration<GaldrineBackupMediaKindV1>(2),
      .displayDateUTCMilliseconds = reader.signedInteger(3),
      .displayTimeZoneSeconds = reader.optionalSignedInteger(4),
      .dateSource = reader.enumeration<GaldrineBackupMediaDateSourceV1>(5),
      .importDateUTCMilliseconds = reader.signedInteger(6),
      .originalFilename = reader.text(7),
      .favorite = reader.boolean(8),
      .lifecycle = reader.enumeration<GaldrineBackupMediaLifecycleV1>(9),
      .trashDateUTCMilliseconds = reader.optionalSignedInteger(10),
      .sourceType = reader.enumeration<GaldrineBackupMediaSourceTypeV1>(11),
      .entitlementCounted = reader.boolean(12),
      .resourceIdentifiers = resourceIdentifiers,
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestItemRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::enumeration(kind_))
      .add(GaldrineCBORValue::signedInteger(displayDateUTCMilliseconds_))
      .add(Writer::optionalSigned(displayTimeZoneSeconds_))
      .add(Writer::enumeration(dateSource_))
      .add(GaldrineCBORValue::signedInteger(importDateUTCMilliseconds_))
      .add(Writer::text(originalFilename_))
      .add(GaldrineCBORValue::boolean(favorite_))
      .add(Writer::enumeration(lifecycle_))
      .add(Writer::optionalSigned(trashDateUTCMilliseconds_))
      .add(Writer::enumeration(sourceType_))
      .add(GaldrineCBORValue::boolean(entitlementCounted_))
      .add(Writer::identifiers(resourceIdentifiers_))
      .take();
}
