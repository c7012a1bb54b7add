#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyRecordV1.hpp"

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupPayloadKeyRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto boundIdentifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.boundIdentifier);
  if (!boundIdentifier) return std::unexpected(boundIdentifier.error());
  if (fields.wrappedKeyFrame.empty() || fields.wrappedKeyFrame.size() > maximumWrappedKeyFrameByteCount)
    return std::unexpected(Error::invalidKey);

  Record record;
  record.identifier_ = *identifier;
  record.scope_ = fields.scope;
  record.boundIdentifier_ = *boundIdentifier;
  record.wrappedKeyFrame_.assign(fields.wrappedKeyFrame.begin(), fields.wrappedKeyFrame.end());
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const GaldrineCBORBorrowedValue& value) {
  GaldrineBackupManifestFieldReaderV1::Faults faults;
  const auto reader = GaldrineBackupManifestFieldReaderV1::forRecord(
      faults, value, GaldrineBackupFormatV1::manifestPayloadKeyRecordSchemaIdentifier, 4);
  const Fields fields{
      .identifier = reader.bytes(1),
      .scope = reader.enumeration<GaldrineBackupPayloadKeyScopeV1>(2),
      .boundIdentifier = reader.bytes(3),
      .wrappedKeyFrame = reader.bytes(4),
  };
  if (auto verdict = GaldrineBackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  return Writer::RecordMap(GaldrineBackupFormatV1::manifestPayloadKeyRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::enumeration(scope_))
      .add(Writer::bytes(boundIdentifier_))
      .add(Writer::bytes(wrappedKeyFrame_))
      .take();
}
