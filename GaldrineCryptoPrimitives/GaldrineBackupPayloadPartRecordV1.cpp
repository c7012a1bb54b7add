#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadPartRecordV1.hpp"

#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldWriterV1.hpp"

using Record = GaldrineBackupPayloadPartRecordV1;
using Error = GaldrineBackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto artifactIdentifier = GaldrineBackupManifestFieldRulesV1::identifier(fields.artifactIdentifier);
  if (!artifactIdentifier) return std::unexpected(artifactIdentifier.error());
  const auto plaintextSHA256 = GaldrineBackupManifestFieldRulesV1::digest(fields.plaintextSHA256);
  if (!plaintextSHA256) return std::unexpected(plaintextSHA256.error());
  const auto artifactFileSHA256 = GaldrineBackupManifestFieldRulesV1::digest(fields.artifactFileSHA256);
  if (!artifactFileSHA256) return std::unexpected(artifactFileSHA256.error());
  if (fields.plaintextByteCount == 0 || fields.plaintextByteCount > maximumPlaintextByteCount || fields.artifactFileByteCount == 0)
    return std::unexpected(Error::invalidResourceLayout);

  Record record;
  record.ordinal_ = fields.ordinal;
  record.plaintextOffset_ = fields.plaintextOffset;
  record.plaintextByteCount_ = fields.plaintextByteCount;
  record.plaintextSHA256_ = *plaintextSHA256;
  record.container_ = fields.container;
  record.artifactIdentifier_ = *artifactIdentifier;
  record.artifactOrdinal_ = fields.artifactOrdinal;
  record.artifactFileByteCount_ = fields.artifactFileByteCount;
  record.artifactFileSHA256_ = *artifactFileSHA256;
  return record;
}

Record::Fields Record::readFields(const GaldrineBackupManifestFieldReaderV1& reader) {
  return Fields{
      .ordinal = reader.unsignedInteger(0),
      .plaintextOffset = reader.unsignedInteger(1),
      .plaintextByteCount = reader.unsignedInteger(2),
      .plaintextSHA256 = reader.bytes(3),
      .container = reader.enumeration<GaldrineBackupPayloadContainerKindV1>(4),
      .artifactIdentifier = reader.bytes(5),
      .artifactOrdinal = reader.unsignedInteger(6),
      .artifactFileByteCount = reader.unsignedInteger(7),
      .artifactFileSHA256 = reader.bytes(8),
  };
}

GaldrineCBORValue Record::cborValue() const {
  namespace Writer = GaldrineBackupManifestFieldWriterV1;
  auto items = Writer::nullArray(9);
  items[0] = GaldrineCBORValue::unsignedInteger(ordinal_);
  items[1] = GaldrineCBORValue::unsignedInteger(plaintextOffset_);
  items[2] = GaldrineCBORValue::unsignedInteger(plaintextByteCount_);
  items[3] = Writer::bytes(plaintextSHA256_);
  items[4] = Writer::enumeration(container_);
  items[5] = Writer::bytes(artifactIdentifier_);
  items[6] = GaldrineCBORValue::unsignedInteger(artifactOrdinal_);
  items[7] = GaldrineCBORValue::unsignedInteger(artifactFileByteCount_);
  items[8] = Writer::bytes(artifactFileSHA256_);
  return GaldrineCBORValue::array(std::move(items));
}
