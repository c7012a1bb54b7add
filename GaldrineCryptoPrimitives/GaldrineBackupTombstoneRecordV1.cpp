#include "GaldrineCryptoPrimitives/GaldrineBackupTombstoneRecordV1.hpp"

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupTombstoneRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto itemIdentifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.itemIdentifier);
  if (!itemIdentifier) return std::unexpected(itemIdentifier.error());
  auto resourceIdentifiers = GaldrineBackupManifestFieldRulesV1::ascendingIdentifiers(
      fields.resourceIdentifiers, GaldrineBackupManifestFieldRulesV1::maximumResourceIdentifierCount);
  if (!resourceIdentifiers) return std::unexpected(Error::invalidValue);

  Record record;
  record.itemIdentifier_ = *itemIdentifier;
  record.deletedAtUTCMilliseconds_ = fields.deletedAtUTCMilliseconds;
  record.resourceIdentifiers_ = std::move(*resourceIdentifiers);
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader = GaldrineBackupManifestFieldReaderV1::forRecord(
      faults, value, GaldrineBackupFormatV1::manifestTombstoneRecordSchemaIdentifier, 3);
  const std::vector<ByteView> resourceIdentifiers = reader.byteStrings(3);
  const Fields fields{
      .itemIdentifier = reader.bytes(1),
      .deletedAtUTCMilliseconds = reader.signedInteger(2),
      .resourceIdentifiers = resourceIdentifiers,
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestTombstoneRecordSchemaIdentifier)
      .add(Writer::bytes(itemIdentifier_))
      .add(GaldrineCBORValue::signedInteger(deletedAtUTCMilliseconds_))
      .add(Writer::identifiers(resourceIdentifiers_))
      .take();
}
