#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumRecordV1.hpp"

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupAlbumRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto parent = GaldrineBackupManifestFieldRulesV1::optionalIdentifier(fields.parentFolderIdentifier);
  if (!parent) return std::unexpected(parent.error());
  const auto cover = GaldrineBackupManifestFieldRulesV1::optionalIdentifier(fields.coverItemIdentifier);
  if (!cover) return std::unexpected(cover.error());
  // The same fault in a folder's name is invalidValue; for albums it is a text fault.
  if (!GaldrineBackupManifestFieldRulesV1::isName(fields.name)) return std::unexpected(Error::invalidText);

  Record record;
  record.identifier_ = *identifier;
  record.parentFolderIdentifier_ = *parent;
  record.name_ = fields.name;
  record.coverItemIdentifier_ = *cover;
  record.sortMode_ = fields.sortMode;
  record.manualOrderEnabled_ = fields.manualOrderEnabled;
  record.manualPosition_ = fields.manualPosition;
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      GaldrineBackupManifestFieldReaderV1::forRecord(faults, value, GaldrineBackupFormatV1::manifestAlbumRecordSchemaIdentifier, 7);
  const Fields fields{
      .identifier = reader.bytes(1),
      .parentFolderIdentifier = reader.optionalBytes(2),
      .name = reader.text(3),
      .coverItemIdentifier = reader.optionalBytes(4),
      .sortMode = reader.enumeration<GaldrineBackupAlbumSortModeV1>(5),
      .manualOrderEnabled = reader.boolean(6),
      .manualPosition = reader.signedInteger(7),
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestAlbumRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::optionalBytes(parentFolderIdentifier_))
      .add(Writer::text(name_))
      .add(Writer::optionalBytes(coverItemIdentifier_))
      .add(Writer::enumeration(sortMode_))
      .add(GaldrineCBORValue::boolean(manualOrderEnabled_))
      .add(GaldrineCBORValue::signedInteger(manualPosition_))
      .take();
}
