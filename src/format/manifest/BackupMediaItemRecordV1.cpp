#include "format/manifest/BackupMediaItemRecordV1.hpp"

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::format {

using Record = BackupMediaItemRecordV1;
using Error = BackupManifestRecordV1Error;

namespace {

// Only sources that never had a file name may leave it empty.
bool mayLackFilename(BackupMediaSourceTypeV1 sourceType) {
  return sourceType == BackupMediaSourceTypeV1::shareExtension || sourceType == BackupMediaSourceTypeV1::privateCamera;
}

bool hasValidFilename(const Record::Fields& fields) {
  if (fields.originalFilename.empty() && !mayLackFilename(fields.sourceType)) return false;
  return fields.originalFilename.size() <= Record::maximumOriginalFilenameByteCount &&
         platform::UTF8::isValid(fields.originalFilename);
}

bool hasValidTimeZone(std::optional<std::int64_t> seconds) {
  return !seconds || (*seconds >= -Record::maximumTimeZoneSeconds && *seconds <= Record::maximumTimeZoneSeconds);
}

}  // namespace

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = BackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  if (!hasValidFilename(fields) || !hasValidTimeZone(fields.displayTimeZoneSeconds))
    return std::unexpected(Error::invalidValue);
  const bool trashed = fields.lifecycle == BackupMediaLifecycleV1::trash;
  if (fields.trashDateUTCMilliseconds.has_value() != trashed) return std::unexpected(Error::invalidValue);
  auto resourceIdentifiers = BackupManifestFieldRulesV1::ascendingIdentifiers(
      fields.resourceIdentifiers, BackupManifestFieldRulesV1::maximumResourceIdentifierCount);
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

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      BackupManifestFieldReaderV1::forRecord(faults, value, BackupFormatV1::manifestItemRecordSchemaIdentifier, 13);
  const std::vector<ByteView> resourceIdentifiers = reader.byteStrings(13);
  const Fields fields{
      .identifier = reader.bytes(1),
      .kind = reader.enumeration<BackupMediaKindV1>(2),
      .displayDateUTCMilliseconds = reader.signedInteger(3),
      .displayTimeZoneSeconds = reader.optionalSignedInteger(4),
      .dateSource = reader.enumeration<BackupMediaDateSourceV1>(5),
      .importDateUTCMilliseconds = reader.signedInteger(6),
      .originalFilename = reader.text(7),
      .favorite = reader.boolean(8),
      .lifecycle = reader.enumeration<BackupMediaLifecycleV1>(9),
      .trashDateUTCMilliseconds = reader.optionalSignedInteger(10),
      .sourceType = reader.enumeration<BackupMediaSourceTypeV1>(11),
      .entitlementCounted = reader.boolean(12),
      .resourceIdentifiers = resourceIdentifiers,
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestItemRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::enumeration(kind_))
      .add(CBORValue::signedInteger(displayDateUTCMilliseconds_))
      .add(Writer::optionalSigned(displayTimeZoneSeconds_))
      .add(Writer::enumeration(dateSource_))
      .add(CBORValue::signedInteger(importDateUTCMilliseconds_))
      .add(Writer::text(originalFilename_))
      .add(CBORValue::boolean(favorite_))
      .add(Writer::enumeration(lifecycle_))
      .add(Writer::optionalSigned(trashDateUTCMilliseconds_))
      .add(Writer::enumeration(sourceType_))
      .add(CBORValue::boolean(entitlementCounted_))
      .add(Writer::identifiers(resourceIdentifiers_))
      .take();
}

}  // namespace galdrine::format
