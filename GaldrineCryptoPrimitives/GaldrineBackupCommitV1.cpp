#include "GaldrineCryptoPrimitives/GaldrineBackupCommitV1.hpp"

#include <algorithm>
#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;
namespace Limits = GaldrineBackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 11;

using Reference = GaldrineBackupArtifactReferenceV1;

bool hasFieldShapes(const GaldrineCBORBorrowedValue& commit) {
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

std::expected<std::vector<Reference>, GaldrineBackupGraphV1Error> readTips(const GaldrineCBORBorrowedValue& storedTips) {
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
std::expected<void, GaldrineBackupGraphV1Error> checkLineageFields(const Bytes& identifier,
                                                                   const std::optional<Reference>& parent,
                                                                   std::uint64_t generation,
                                                                   const std::vector<Reference>& tips) {
  constexpr auto invalid = GaldrineBackupGraphV1Error::invalidReference;
  if (parent.has_value() != (generation != 0)) return std::unexpected(invalid);
  if (parent && parent->identifier() == identifier) return std::unexpected(invalid);
  if (tips.size() > Limits::maximumAcknowledgedTipCount) return std::unexpected(invalid);
  const bool ascending = std::ranges::adjacent_find(tips, [](const Reference& earlier, const Reference& later) {
                           return !GaldrineByteOrder::precedes(earlier.identifier(), later.identifier());
                         }) == tips.end();
  if (!ascending) return std::unexpected(invalid);
  if (std::ranges::any_of(tips, [&](const Reference& tip) { return tip.identifier() == identifier; })) {
    return std::unexpected(invalid);
  }
  return {};
}

}  // namespace

std::expected<GaldrineBackupCommitV1, GaldrineBackupGraphV1Error> GaldrineBackupCommitV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, std::optional<GaldrineBackupArtifactReferenceV1> parent,
    GaldrineBackupArtifactReferenceV1 snapshot, Bytes manifestIdentifier, Bytes writerDeviceIdentifier,
    std::uint64_t writerEpoch, std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
    Bytes requiredPayloadSetSHA256, std::vector<GaldrineBackupArtifactReferenceV1> acknowledgedAlternateTips) {
  if (!hasIdentifierLength(identifier) || !hasIdentifierLength(libraryDomainIdentifier) ||
      !hasIdentifierLength(manifestIdentifier) || !hasIdentifierLength(writerDeviceIdentifier)) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  }
  if (requiredPayloadSetSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(GaldrineBackupGraphV1Error::invalidDigest);
  }
  const auto lineage = checkLineageFields(identifier, parent, generation, acknowledgedAlternateTips);
  if (!lineage) return std::unexpected(lineage.error());
  return GaldrineBackupCommitV1(std::move(identifier), std::move(libraryDomainIdentifier), std::move(parent),
                                std::move(snapshot), std::move(manifestIdentifier), std::move(writerDeviceIdentifier),
                                writerEpoch, generation, createdAtUTCMilliseconds, std::move(requiredPayloadSetSHA256),
                                std::move(acknowledgedAlternateTips));
}

GaldrineBackupCommitV1::GaldrineBackupCommitV1(Bytes identifier, Bytes libraryDomainIdentifier,
                                               std::optional<GaldrineBackupArtifactReferenceV1> parent,
                                               GaldrineBackupArtifactReferenceV1 snapshot, Bytes manifestIdentifier,
                                               Bytes writerDeviceIdentifier, std::uint64_t writerEpoch,
                                               std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
                                               Bytes requiredPayloadSetSHA256,
                                               std::vector<GaldrineBackupArtifactReferenceV1> acknowledgedAlternateTips)
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

std::expected<Bytes, GaldrineBackupGraphV1Error> GaldrineBackupCommitV1::encoded() const {
  GaldrineCBORValue::Array tips;
  tips.reserve(acknowledgedAlternateTips_.size());
  for (const auto& tip : acknowledgedAlternateTips_) tips.push_back(tip.cborValue());
  GaldrineCBORValue::Map fields;
  fields.emplace(1, GaldrineCBORValue::byteString(identifier_));
  fields.emplace(2, GaldrineCBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, parent_ ? parent_->cborValue() : GaldrineCBORValue::null());
  fields.emplace(4, snapshot_.cborValue());
  fields.emplace(5, GaldrineCBORValue::byteString(manifestIdentifier_));
  fields.emplace(6, GaldrineCBORValue::byteString(writerDeviceIdentifier_));
  fields.emplace(7, GaldrineCBORValue::unsignedInteger(writerEpoch_));
  fields.emplace(8, GaldrineCBORValue::unsignedInteger(generation_));
  fields.emplace(9, GaldrineCBORValue::signedInteger(createdAtUTCMilliseconds_));
  fields.emplace(10, GaldrineCBORValue::byteString(requiredPayloadSetSHA256_));
  fields.emplace(11, GaldrineCBORValue::array(std::move(tips)));
  return CBOR::encodeRecordMap(std::move(fields), GaldrineBackupFormatV1::commitSchemaIdentifier, Limits::graphDescriptor);
}

std::expected<GaldrineBackupCommitV1, GaldrineBackupGraphV1Error> GaldrineBackupCommitV1::decode(ByteView plaintext) {
  const auto commit =
      CBOR::decodeRecordMap(plaintext, Limits::graphDescriptor, GaldrineBackupFormatV1::commitSchemaIdentifier, lastKey);
  if (!commit) return std::unexpected(commit.error());
  if (!hasFieldShapes(*commit)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);

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
              CBOR::unsignedInteger(CBOR::field(*commit, 8)), *createdAt, CBOR::ownedByteString(CBOR::field(*commit, 10)),
              std::move(*tips));
}
