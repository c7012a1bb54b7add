#include "format/graph/BackupCommitV1.hpp"

#include <algorithm>
#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 11;

using Reference = BackupArtifactReferenceV1;

bool hasFieldShapes(const CBORBorrowedValue& commit) {
  const auto& parent = CBOR::field(commit, 3);
  const auto* tips = CBOR::field(commit, 11).asArray();
  return CBOR::isByteString(CBOR::field(commit, 1)) && CBOR::isByteString(CBOR::field(commit, 2)) &&
         (parent.isNull() || Reference::hasCBORShape(parent)) && Reference::hasCBORShape(CBOR::field(commit, 4)) &&
         CBOR::isByteString(CBOR::field(commit, 5)) && CBOR::isByteString(CBOR::field(commit, 6)) &&
         CBOR::isUnsigned(CBOR::field(commit, 7)) && CBOR::isUnsigned(CBOR::field(commit, 8)) &&
         CBOR::isTimestamp(CBOR::field(commit, 9)) && CBOR::isByteString(CBOR::field(commit, 10)) && tips != nullptr &&
         std::ranges::all_of(*tips, Reference::hasCBORShape);
}

bool hasIdentifierLength(const Bytes& identifier) { return identifier.size() == Limits::identifierByteCount; }

std::expected<std::vector<Reference>, BackupGraphV1Error> readTips(const CBORBorrowedValue& storedTips) {
  std::vector<Reference> tips;
  tips.reserve(storedTips.asArray()->size());
  for (const auto& storedTip : *storedTips.asArray()) {
    auto tip = Reference::fromCBOR(storedTip);
    if (!tip) return std::unexpected(tip.error());
    tips.push_back(std::move(*tip));
  }
  return tips;
}

// checkLineageFields applies the rules that tie parent, generation and acknowledged tips to
// the commit's own identifier.
std::expected<void, BackupGraphV1Error> checkLineageFields(const Bytes& identifier,
                                                           const std::optional<Reference>& parent,
                                                           std::uint64_t generation,
                                                           const std::vector<Reference>& tips) {
  constexpr auto invalid = BackupGraphV1Error::invalidReference;
  if (parent.has_value() != (generation != 0)) return std::unexpected(invalid);
  if (parent && parent->identifier() == identifier) return std::unexpected(invalid);
  if (tips.size() > Limits::maximumAcknowledgedTipCount) return std::unexpected(invalid);
  const bool ascending = std::ranges::adjacent_find(tips, [](const Reference& earlier, const Reference& later) {
                           return !ByteOrder::precedes(earlier.identifier(), later.identifier());
                         }) == tips.end();
  if (!ascending) return std::unexpected(invalid);
  if (std::ranges::any_of(tips, [&](const Reference& tip) { return tip.identifier() == identifier; })) {
    return std::unexpected(invalid);
  }
  return {};
}

}  // namespace

std::expected<BackupCommitV1, BackupGraphV1Error> BackupCommitV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, std::optional<BackupArtifactReferenceV1> parent,
    BackupArtifactReferenceV1 snapshot, Bytes manifestIdentifier, Bytes writerDeviceIdentifier,
    std::uint64_t writerEpoch, std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
    Bytes requiredPayloadSetSHA256, std::vector<BackupArtifactReferenceV1> acknowledgedAlternateTips) {
  if (!hasIdentifierLength(identifier) || !hasIdentifierLength(libraryDomainIdentifier) ||
      !hasIdentifierLength(manifestIdentifier) || !hasIdentifierLength(writerDeviceIdentifier)) {
    return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  }
  if (requiredPayloadSetSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidDigest);
  }
  const auto lineage = checkLineageFields(identifier, parent, generation, acknowledgedAlternateTips);
  if (!lineage) return std::unexpected(lineage.error());
  return BackupCommitV1(std::move(identifier), std::move(libraryDomainIdentifier), std::move(parent),
                        std::move(snapshot), std::move(manifestIdentifier), std::move(writerDeviceIdentifier),
                        writerEpoch, generation, createdAtUTCMilliseconds, std::move(requiredPayloadSetSHA256),
                        std::move(acknowledgedAlternateTips));
}

BackupCommitV1::BackupCommitV1(Bytes identifier, Bytes libraryDomainIdentifier,
                               std::optional<BackupArtifactReferenceV1> parent, BackupArtifactReferenceV1 snapshot,
                               Bytes manifestIdentifier, Bytes writerDeviceIdentifier, std::uint64_t writerEpoch,
                               std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
                               Bytes requiredPayloadSetSHA256,
                               std::vector<BackupArtifactReferenceV1> acknowledgedAlternateTips)
    : identifier_(std::move(identifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      parent_(std::move(parent)),
      snapshot_(std::move(snapshot)),
      manifestIdentifier_(std::move(manifestIdentifier)),
      writerDeviceIdentifier_(std::move(writerDeviceIdentifier)),
      writerEpoch_(writerEpoch),
      generation_(generation),
      createdAtUTCMilliseconds_(createdAtUTCMilliseconds),
      requiredPayloadSetSHA256_(std::move(requiredPayloadSetSHA256)),
      acknowledgedAlternateTips_(std::move(acknowledgedAlternateTips)) {}

std::expected<Bytes, BackupGraphV1Error> BackupCommitV1::encoded() const {
  CBORValue::Array tips;
  tips.reserve(acknowledgedAlternateTips_.size());
  for (const auto& tip : acknowledgedAlternateTips_) tips.push_back(tip.cborValue());
  CBORValue::Map fields;
  fields.emplace(1, CBORValue::byteString(identifier_));
  fields.emplace(2, CBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, parent_ ? parent_->cborValue() : CBORValue::null());
  fields.emplace(4, snapshot_.cborValue());
  fields.emplace(5, CBORValue::byteString(manifestIdentifier_));
  fields.emplace(6, CBORValue::byteString(writerDeviceIdentifier_));
  fields.emplace(7, CBORValue::unsignedInteger(writerEpoch_));
  fields.emplace(8, CBORValue::unsignedInteger(generation_));
  fields.emplace(9, CBORValue::signedInteger(createdAtUTCMilliseconds_));
  fields.emplace(10, CBORValue::byteString(requiredPayloadSetSHA256_));
  fields.emplace(11, CBORValue::array(std::move(tips)));
  return CBOR::encodeRecordMap(std::move(fields), BackupFormatV1::commitSchemaIdentifier, Limits::graphDescriptor);
}

std::expected<BackupCommitV1, BackupGraphV1Error> BackupCommitV1::decode(ByteView plaintext) {
  const auto commit =
      CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor, BackupFormatV1::commitSchemaIdentifier, lastKey);
  if (!commit) return std::unexpected(commit.error());
  if (!hasFieldShapes(*commit)) return std::unexpected(BackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*commit, 9));
  if (!createdAt) return std::unexpected(createdAt.error());
  std::optional<Reference> parent;
  if (!CBOR::field(*commit, 3).isNull()) {
    auto storedParent = Reference::fromCBOR(CBOR::field(*commit, 3));
    if (!storedParent) return std::unexpected(storedParent.error());
    parent.emplace(std::move(*storedParent));
  }
  auto snapshot = Reference::fromCBOR(CBOR::field(*commit, 4));
  if (!snapshot) return std::unexpected(snapshot.error());
  auto tips = readTips(CBOR::field(*commit, 11));
  if (!tips) return std::unexpected(tips.error());
  return make(CBOR::ownedByteString(CBOR::field(*commit, 1)), CBOR::ownedByteString(CBOR::field(*commit, 2)),
              std::move(parent), std::move(*snapshot), CBOR::ownedByteString(CBOR::field(*commit, 5)),
              CBOR::ownedByteString(CBOR::field(*commit, 6)), CBOR::unsignedInteger(CBOR::field(*commit, 7)),
              CBOR::unsignedInteger(CBOR::field(*commit, 8)), *createdAt,
              CBOR::ownedByteString(CBOR::field(*commit, 10)), std::move(*tips));
}

}  // namespace galdrine::format
