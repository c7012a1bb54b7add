#include "format/manifest/BackupAlbumFolderRecordV1.hpp"

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupAlbumFolderRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = BackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto parent = BackupManifestFieldRulesV1::optionalIdentifier(fields.parentFolderIdentifier);
  if (!parent) return std::unexpected(parent.error());
  if (!BackupManifestFieldRulesV1::isName(fields.name)) return std::unexpected(Error::invalidValue);
  if (*parent == *identifier) return std::unexpected(Error::invalidValue);

  Record record;
  record.identifier_ = *identifier;
  record.parentFolderIdentifier_ = *parent;
  record.name_ = fields.name;
  record.manualPosition_ = fields.manualPosition;
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      BackupManifestFieldReaderV1::forRecord(faults, value, BackupFormatV1::manifestFolderRecordSchemaIdentifier, 4);
  const Fields fields{
      .identifier = reader.bytes(1),
      .parentFolderIdentifier = reader.optionalBytes(2),
      .name = reader.text(3),
      .manualPosition = reader.signedInteger(4),
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestFolderRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::optionalBytes(parentFolderIdentifier_))
      .add(Writer::text(name_))
      .add(CBORValue::signedInteger(manualPosition_))
      .take();
}

}  // namespace galdrine::format
