#include "format/manifest/BackupPayloadKeyRecordV1.hpp"

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupPayloadKeyRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = BackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto boundIdentifier = BackupManifestFieldRulesV1::identifier(fields.boundIdentifier);
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

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader = BackupManifestFieldReaderV1::forRecord(
      faults, value, BackupFormatV1::manifestPayloadKeyRecordSchemaIdentifier, 4);
  const Fields fields{
      .identifier = reader.bytes(1),
      .scope = reader.enumeration<BackupPayloadKeyScopeV1>(2),
      .boundIdentifier = reader.bytes(3),
      .wrappedKeyFrame = reader.bytes(4),
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  return Writer::RecordMap(BackupFormatV1::manifestPayloadKeyRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::enumeration(scope_))
      .add(Writer::bytes(boundIdentifier_))
      .add(Writer::bytes(wrappedKeyFrame_))
      .take();
}

}  // namespace galdrine::format
