#include "format/manifest/BackupMediaResourceRecordV1.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestFieldWriterV1.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::format {

using Record = BackupMediaResourceRecordV1;
using Part = BackupPayloadPartRecordV1;
using Error = BackupManifestRecordV1Error;
using Container = BackupPayloadContainerKindV1;

namespace {

std::unexpected<Error> layoutFault() { return std::unexpected(Error::invalidResourceLayout); }

bool hasValidUTI(std::string_view uti) {
  return !uti.empty() && uti.size() <= Record::maximumOriginalUTIByteCount && platform::UTF8::isValid(uti);
}

bool isPixelCount(std::uint64_t count) { return count >= 1 && count <= Record::maximumPixelCount; }

bool hasValidPixels(std::optional<std::uint64_t> width, std::optional<std::uint64_t> height) {
  if (width.has_value() != height.has_value()) return false;
  return !width || (isPixelCount(*width) && isPixelCount(*height));
}

// A duration is a length of time: finite and not below zero. Negative zero compares equal to
// zero and so passes.
bool hasValidDuration(std::optional<std::uint64_t> bits) {
  if (!bits) return true;
  const auto seconds = std::bit_cast<double>(*bits);
  return std::isfinite(seconds) && !(seconds < 0.0);
}

bool sharesAnArtifact(std::span<const Part> parts) {
  if (parts.size() < 2) return false;
  std::vector<BackupIdentifierV1> identifiers;
  identifiers.reserve(parts.size());
  for (const Part& part : parts) identifiers.push_back(part.artifactIdentifier());
  std::ranges::sort(identifiers);
  return std::ranges::adjacent_find(identifiers) != identifiers.end();
}

// Each part begins where the ones before it end, and together they cover the resource.
bool partsAreContiguous(std::span<const Part> parts, std::uint64_t plaintextByteCount) {
  std::uint64_t covered = 0;
  for (const Part& part : parts) {
    if (part.plaintextOffset() != covered) return false;
    if (part.plaintextByteCount() > std::numeric_limits<std::uint64_t>::max() - covered) return false;
    covered += part.plaintextByteCount();
  }
  return covered == plaintextByteCount;
}

bool isValidPackedPart(std::span<const Part> parts, ByteView plaintextSHA256) {
  if (parts.size() != 1) return false;
  const Part& part = parts.front();
  return part.plaintextOffset() == 0 && part.plaintextByteCount() <= Part::maximumPlaintextByteCount &&
         ByteOrder::equal(part.plaintextSHA256(), plaintextSHA256) &&
         part.artifactOrdinal() <= Record::maximumPackOrdinal;
}

bool areValidChunkParts(std::span<const Part> parts) {
  return std::ranges::all_of(parts, [](const Part& part) {
    return part.container() == Container::chunk && part.artifactOrdinal() == part.ordinal();
  });
}

}  // namespace

std::expected<void, Error> Record::validateResourceParts(std::span<const Part> parts, std::uint64_t plaintextByteCount,
                                                         ByteView plaintextSHA256) {
  if (parts.empty() || parts.size() > maximumPartCount) return layoutFault();
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (parts[index].ordinal() != index) return layoutFault();
  }
  const bool allPacked =
      std::ranges::all_of(parts, [](const Part& part) { return part.container() == Container::pack; });
  if (!allPacked && sharesAnArtifact(parts)) return layoutFault();
  if (!partsAreContiguous(parts, plaintextByteCount)) return layoutFault();
  if (parts.front().container() == Container::pack) {
    if (!isValidPackedPart(parts, plaintextSHA256)) return layoutFault();
  } else if (!areValidChunkParts(parts)) {
    return layoutFault();
  }
  return {};
}

std::expected<Record, Error> Record::make(const Fields& fields) {
  const auto identifier = BackupManifestFieldRulesV1::identifier(fields.identifier);
  if (!identifier) return std::unexpected(identifier.error());
  const auto itemIdentifier = BackupManifestFieldRulesV1::identifier(fields.itemIdentifier);
  if (!itemIdentifier) return std::unexpected(itemIdentifier.error());
  const auto payloadKeyIdentifier = BackupManifestFieldRulesV1::identifier(fields.payloadKeyIdentifier);
  if (!payloadKeyIdentifier) return std::unexpected(payloadKeyIdentifier.error());
  const auto plaintextSHA256 = BackupManifestFieldRulesV1::digest(fields.plaintextSHA256);
  if (!plaintextSHA256) return std::unexpected(plaintextSHA256.error());
  if (!hasValidUTI(fields.originalUTI) || fields.plaintextByteCount == 0 ||
      fields.plaintextByteCount > maximumPlaintextByteCount || !hasValidPixels(fields.pixelWidth, fields.pixelHeight) ||
      !hasValidDuration(fields.durationIEEE754Bits))
    return std::unexpected(Error::invalidValue);
  if (auto layout = validateResourceParts(fields.parts, fields.plaintextByteCount, *plaintextSHA256); !layout)
    return std::unexpected(layout.error());

  Record record;
  record.identifier_ = *identifier;
  record.itemIdentifier_ = *itemIdentifier;
  record.role_ = fields.role;
  record.originalUTI_ = fields.originalUTI;
  record.plaintextByteCount_ = fields.plaintextByteCount;
  record.pixelWidth_ = fields.pixelWidth;
  record.pixelHeight_ = fields.pixelHeight;
  record.durationIEEE754Bits_ = fields.durationIEEE754Bits;
  record.plaintextSHA256_ = *plaintextSHA256;
  record.payloadKeyIdentifier_ = *payloadKeyIdentifier;
  record.parts_.assign(fields.parts.begin(), fields.parts.end());
  return record;
}

std::expected<Record, Error> Record::fromCBOR(const CBORBorrowedValue& value) {
  BackupManifestFieldReaderV1::Faults faults;
  const auto reader =
      BackupManifestFieldReaderV1::forRecord(faults, value, BackupFormatV1::manifestResourceRecordSchemaIdentifier, 11);
  const auto partValues = reader.items(11);
  std::vector<Part::Fields> partFields;
  partFields.reserve(partValues.size());
  for (const auto& partValue : partValues) {
    partFields.push_back(Part::readFields(BackupManifestFieldReaderV1::forArray(faults, partValue, 9)));
  }
  Fields fields{
      .identifier = reader.bytes(1),
      .itemIdentifier = reader.bytes(2),
      .role = reader.enumeration<BackupMediaResourceRoleV1>(3),
      .originalUTI = reader.text(4),
      .plaintextByteCount = reader.unsignedInteger(5),
      .pixelWidth = reader.optionalUnsignedInteger(6),
      .pixelHeight = reader.optionalUnsignedInteger(7),
      .durationIEEE754Bits = reader.optionalUnsignedInteger(8),
      .plaintextSHA256 = reader.bytes(9),
      .payloadKeyIdentifier = reader.bytes(10),
      .parts = {},
  };
  if (auto verdict = BackupManifestFieldReaderV1::verdict(faults); !verdict) return std::unexpected(verdict.error());

  std::vector<Part> parts;
  parts.reserve(partFields.size());
  for (const Part::Fields& part : partFields) {
    auto made = Part::make(part);
    if (!made) return std::unexpected(made.error());
    parts.push_back(*made);
  }
  fields.parts = parts;
  return make(fields);
}

CBORValue Record::cborValue() const {
  namespace Writer = BackupManifestFieldWriterV1;
  auto partItems = Writer::nullArray(parts_.size());
  for (std::size_t index = 0; index < parts_.size(); ++index) partItems[index] = parts_[index].cborValue();
  return Writer::RecordMap(BackupFormatV1::manifestResourceRecordSchemaIdentifier)
      .add(Writer::bytes(identifier_))
      .add(Writer::bytes(itemIdentifier_))
      .add(Writer::enumeration(role_))
      .add(Writer::text(originalUTI_))
      .add(CBORValue::unsignedInteger(plaintextByteCount_))
      .add(Writer::optionalUnsigned(pixelWidth_))
      .add(Writer::optionalUnsigned(pixelHeight_))
      .add(Writer::optionalUnsigned(durationIEEE754Bits_))
      .add(Writer::bytes(plaintextSHA256_))
      .add(Writer::bytes(payloadKeyIdentifier_))
      .add(CBORValue::array(std::move(partItems)))
      .take();
}

}  // namespace galdrine::format
