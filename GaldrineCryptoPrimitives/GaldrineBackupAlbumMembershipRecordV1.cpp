#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumMembershipRecordV1.hpp"

#include <algorithm>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupAlbumMembershipRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto albumIdentifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.albumIdentifier);
  if (!albumIdentifier) return std::unexpected(albumIdentifier.error());
  const auto itemIdentifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.itemIdentifier);
  if (!itemIdentifier) return std::unexpected(itemIdentifier.error());

  Record record;
  std::ranges::copy(*albumIdentifier, record.key_.begin());
  std::ranges::copy(*itemIdentifier, record.key_.begin() + 16);
  record.manualPosition_ = fields.manualPosition;
  record.addedAtUTCMilliseconds_ = fields.addedAtUTCMilliseconds;
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader = GaldrineBackupManifestFieldReaderV1::forRecord(
      faults, value, GaldrineBackupFormatV1::manifestMembershipRecordSchemaIdentifier, 4);
  const Fields fields{
      .albumIdentifier = reader.bytes(1),
      .itemIdentifier = reader.bytes(2),
      .manualPosition = reader.signedInteger(3),
      .addedAtUTCMilliseconds = reader.signedInteger(4),
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestMembershipRecordSchemaIdentifier)
      .add(Writer::bytes(albumIdentifier()))
      .add(Writer::bytes(itemIdentifier()))
      .add(GaldrineCBORValue::signedInteger(manualPosition_))
      .add(GaldrineCBORValue::signedInteger(addedAtUTCMilliseconds_))
      .take();
}
