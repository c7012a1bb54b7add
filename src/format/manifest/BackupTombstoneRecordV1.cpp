#include "format/manifest/BackupTombstoneRecordV1.hpp"

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupTombstoneRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto itemIdentifier = BackupManifestFieldRulesV1::identifier(fields.itemIdentifier);
  if (!itemIdentifier) return std::unexpected(itemIdentifier.error());
  auto resourceIdentifiers = BackupManifestFieldRulesV1::ascendingIdentifiers(
      fields.resourceIdentifiers, BackupManifestFieldRulesV1::maximumResourceIdentifierCount);
  if (!resourceIdentifiers) return std::unexpected(Error::invalidValue);

  Record record;
  record.itemIdentifier_ = *itemIdentifier;
  record.deletedAtUTCMilliseconds_ = fields.deletedAtUTCMilliseconds;
  record.resourceIdentifiers_ = std::move(*resourceIdentifiers);
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      BackupManifestFieldReaderV1::forRecord(faults, value, BackupFormatV1::manifestTombstoneRecordSchemaIdentifier, 3);
  const std::vector<ByteView> resourceIdentifiers = reader.byteStrings(3);
  const Fields fields{
      .itemIdentifier = reader.bytes(1),
      .deletedAtUTCMilliseconds = reader.signedInteger(2),
      .resourceIdentifiers = resourceIdentifiers,
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestTombstoneRecordSchemaIdentifier)
      .add(Writer::bytes(itemIdentifier_))
      .add(CBORValue::signedInteger(deletedAtUTCMilliseconds_))
      .add(Writer::identifiers(resourceIdentifiers_))
      .take();
}

}  // namespace galdrine::format
