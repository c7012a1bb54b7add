#include "format/manifest/BackupAlbumMembershipRecordV1.hpp"

#include <algorithm>

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupAlbumMembershipRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto albumIdentifier = BackupManifestFieldRulesV1::identifier(fields.albumIdentifier);
  if (!albumIdentifier) return std::unexpected(albumIdentifier.error());
  const auto itemIdentifier = BackupManifestFieldRulesV1::identifier(fields.itemIdentifier);
  if (!itemIdentifier) return std::unexpected(itemIdentifier.error());

  Record record;
  std::ranges::copy(*albumIdentifier, record.key_.begin());
  std::ranges::copy(*itemIdentifier, record.key_.begin() + 16);
  record.manualPosition_ = fields.manualPosition;
  record.addedAtUTCMilliseconds_ = fields.addedAtUTCMilliseconds;
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader = BackupManifestFieldReaderV1::forRecord(
      faults, value, BackupFormatV1::manifestMembershipRecordSchemaIdentifier, 4);
  const Fields fields{
      .albumIdentifier = reader.bytes(1),
      .itemIdentifier = reader.bytes(2),
      .manualPosition = reader.signedInteger(3),
      .addedAtUTCMilliseconds = reader.signedInteger(4),
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestMembershipRecordSchemaIdentifier)
      .add(Writer::bytes(albumIdentifier()))
      .add(Writer::bytes(itemIdentifier()))
      .add(CBORValue::signedInteger(manualPosition_))
      .add(CBORValue::signedInteger(addedAtUTCMilliseconds_))
      .take();
}

}  // namespace galdrine::format
