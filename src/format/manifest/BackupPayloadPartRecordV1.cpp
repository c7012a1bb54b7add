#include "format/manifest/BackupPayloadPartRecordV1.hpp"

#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"

namespace galdrine::format {

using Record = BackupPayloadPartRecordV1;
using Error = BackupManifestRecordV1Error;

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto artifactIdentifier = BackupManifestFieldRulesV1::identifier(fields.artifactIdentifier);
  if (!artifactIdentifier) return std::unexpected(artifactIdentifier.error());
  const auto plaintextSHA256 = BackupManifestFieldRulesV1::digest(fields.plaintextSHA256);
  if (!plaintextSHA256) return std::unexpected(plaintextSHA256.error());
  const auto artifactFileSHA256 = BackupManifestFieldRulesV1::digest(fields.artifactFileSHA256);
  if (!artifactFileSHA256) return std::unexpected(artifactFileSHA256.error());
  if (fields.plaintextByteCount == 0 || fields.plaintextByteCount > maximumPlaintextByteCount ||
      fields.artifactFileByteCount == 0)
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

Record::Fields Record::readFields(const BackupManifestFieldReaderV1& reader) {
  return Fields{
      .ordinal = reader.unsignedInteger(0),
      .plaintextOffset = reader.unsignedInteger(1),
      .plaintextByteCount = reader.unsignedInteger(2),
      .plaintextSHA256 = reader.bytes(3),
      .container = reader.enumeration<BackupPayloadContainerKindV1>(4),
      .artifactIdentifier = reader.bytes(5),
      .artifactOrdinal = reader.unsignedInteger(6),
      .artifactFileByteCount = reader.unsignedInteger(7),
      .artifactFileSHA256 = reader.bytes(8),
  };
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  auto items = Writer::nullArray(9);
  items[0] = CBORValue::unsignedInteger(ordinal_);
  items[1] = CBORValue::unsignedInteger(plaintextOffset_);
  items[2] = CBORValue::unsignedInteger(plaintextByteCount_);
  items[3] = Writer::bytes(plaintextSHA256_);
  items[4] = Writer::enumeration(container_);
  items[5] = Writer::bytes(artifactIdentifier_);
  items[6] = CBORValue::unsignedInteger(artifactOrdinal_);
  items[7] = CBORValue::unsignedInteger(artifactFileByteCount_);
  items[8] = Writer::bytes(artifactFileSHA256_);
  return CBORValue::array(std::move(items));
}

}  // namespace galdrine::format
