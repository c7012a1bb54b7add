#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumFolderRecordV1.hpp"

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupAlbumFolderRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto parent = GaldrineBackupManifestFieldRulesV1::optionalIdentifier(fields.parentFolderIdentifier);
  if (!parent) return std::unexpected(parent.error());
  if (!GaldrineBackupManifestFieldRulesV1::isName(fields.name)) return std::unexpected(Error::invalidValue);
  if (*parent == *identifier) return std::unexpected(Error::invalidValue);

  Record record;
  record.identifier_ = *identifier;
  record.parentFolderIdentifier_ = *parent;
  record.name_ = fields.name;
  record.manualPosition_ = fields.manualPosition;
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader = GaldrineBackupManifestFieldReaderV1::forRecord(
      faults, value, GaldrineBackupFormatV1::manifestFolderRecordSchemaIdentifier, 4);
  const Fields fields{
      .identifier = reader.bytes(1),
      .parentFolderIdentifier = reader.optionalBytes(2),
      .name = reader.text(3),
      .manualPosition = reader.signedInteger(4),
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestFolderRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::optionalBytes(parentFolderIdentifier_))
      .add(Writer::text(name_))
      .add(GaldrineCBORValue::signedInteger(manualPosition_))
      .take();
}
