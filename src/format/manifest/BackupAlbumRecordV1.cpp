#include "format/manifest/BackupAlbumRecordV1.hpp"

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupAlbumRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = BackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto parent = BackupManifestFieldRulesV1::optionalIdentifier(fields.parentFolderIdentifier);
  if (!parent) return std::unexpected(parent.error());
  const auto cover = BackupManifestFieldRulesV1::optionalIdentifier(fields.coverItemIdentifier);
  if (!cover) return std::unexpected(cover.error());
  // The same fault in a folder's name is invalidValue; for albums it is a text fault.
  if (!BackupManifestFieldRulesV1::isName(fields.name)) return std::unexpected(Error::invalidText);

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

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      BackupManifestFieldReaderV1::forRecord(faults, value, BackupFormatV1::manifestAlbumRecordSchemaIdentifier, 7);
  const Fields fields{
      .identifier = reader.bytes(1),
      .parentFolderIdentifier = reader.optionalBytes(2),
      .name = reader.text(3),
      .coverItemIdentifier = reader.optionalBytes(4),
      .sortMode = reader.enumeration<BackupAlbumSortModeV1>(5),
      .manualOrderEnabled = reader.boolean(6),
      .manualPosition = reader.signedInteger(7),
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestAlbumRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::optionalBytes(parentFolderIdentifier_))
      .add(Writer::text(name_))
      .add(Writer::optionalBytes(coverItemIdentifier_))
      .add(Writer::enumeration(sortMode_))
      .add(CBORValue::boolean(manualOrderEnabled_))
      .add(CBORValue::signedInteger(manualPosition_))
      .take();
}

}  // namespace galdrine::format
