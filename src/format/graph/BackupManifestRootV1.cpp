#include "format/graph/BackupManifestRootV1.hpp"

#include <algorithm>
#include <utility>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;
namespace Limits = BackupGraphLimitsV1;

namespace {

constexpr std::uint64_t lastKey = 9;

bool hasFieldShapes(const CBORBorrowedValue& root) {
  const auto* sections = CBOR::field(root, 8).asArray();
  return CBOR::isByteString(CBOR::field(root, 1)) && CBOR::isByteString(CBOR::field(root, 2)) &&
         CBOR::isByteString(CBOR::field(root, 3)) && CBOR::isTimestamp(CBOR::field(root, 4)) &&
         BackupManifestCountsV1::hasCBORShape(CBOR::field(root, 5)) && CBOR::isUnsigned(CBOR::field(root, 6)) &&
         CBOR::isByteString(CBOR::field(root, 7)) && sections != nullptr &&
         std::ranges::all_of(*sections, BackupManifestSectionReferenceV1::hasCBORShape) &&
         CBOR::isByteString(CBOR::field(root, 9));
}

std::expected<std::vector<BackupManifestSectionReferenceV1>, BackupGraphV1Error> readSections(
    const CBORBorrowedValue& storedSections) {
  std::vector<BackupManifestSectionReferenceV1> sections;
  sections.reserve(storedSections.asArray()->size());
  for (const auto& storedSection : *storedSections.asArray()) {
    auto section = BackupManifestSectionReferenceV1::fromCBOR(storedSection);
    if (!section) return std::unexpected(section.error());
    sections.push_back(std::move(*section));
  }
  return sections;
}

}  // namespace

std::expected<BackupManifestRootV1, BackupGraphV1Error> BackupManifestRootV1::make(
    Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier, std::int64_t createdAtUTCMilliseconds,
    BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
    std::vector<BackupManifestSectionReferenceV1> sections, Bytes sectionSetSHA256) {
  if (identifier.size() != Limits::identifierByteCount ||
      libraryDomainIdentifier.size() != Limits::identifierByteCount ||
      snapshotIdentifier.size() != Limits::identifierByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  }
  if (logicalPlaintextByteCount > Limits::maximumByteTotal) return std::unexpected(BackupGraphV1Error::invalidCount);
  if (requiredPayloadSetSHA256.size() != Limits::digestByteCount) {
    return std::unexpected(BackupGraphV1Error::invalidDigest);
  }
  const auto sectionSet = BackupGraphV1::validateSectionSet(sections, counts);
  if (!sectionSet) return std::unexpected(sectionSet.error());
  const auto recomputed = BackupGraphV1::sectionSetDigest(sections);
  if (!recomputed) return std::unexpected(recomputed.error());
  if (*recomputed != sectionSetSHA256) return std::unexpected(BackupGraphV1Error::verificationFailed);
  return BackupManifestRootV1(std::move(identifier), std::move(libraryDomainIdentifier), std::move(snapshotIdentifier),
                              createdAtUTCMilliseconds, std::move(counts), logicalPlaintextByteCount,
                              std::move(requiredPayloadSetSHA256), std::move(sections), std::move(sectionSetSHA256));
}

BackupManifestRootV1::BackupManifestRootV1(Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier,
                                           std::int64_t createdAtUTCMilliseconds, BackupManifestCountsV1 counts,
                                           std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
                                           std::vector<BackupManifestSectionReferenceV1> sections,
                                           Bytes sectionSetSHA256)
    : identifier_(std::move(identifier)),
      libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
      snapshotIdentifier_(std::move(snapshotIdentifier)),
      createdAtUTCMilliseconds_(createdAtUTCMilliseconds),
      counts_(std::move(counts)),
      logicalPlaintextByteCount_(logicalPlaintextByteCount),
      requiredPayloadSetSHA256_(std::move(requiredPayloadSetSHA256)),
      sections_(std::move(sections)),
      sectionSetSHA256_(std::move(sectionSetSHA256)) {}

std::expected<Bytes, BackupGraphV1Error> BackupManifestRootV1::encoded() const {
  CBORValue::Array sections;
  sections.reserve(sections_.size());
  for (const auto& section : sections_) sections.push_back(section.cborValue());
  CBORValue::Map fields;
  fields.emplace(1, CBORValue::byteString(identifier_));
  fields.emplace(2, CBORValue::byteString(libraryDomainIdentifier_));
  fields.emplace(3, CBORValue::byteString(snapshotIdentifier_));
  fields.emplace(4, CBORValue::signedInteger(createdAtUTCMilliseconds_));
  fields.emplace(5, counts_.cborValue());
  fields.emplace(6, CBORValue::unsignedInteger(logicalPlaintextByteCount_));
  fields.emplace(7, CBORValue::byteString(requiredPayloadSetSHA256_));
  fields.emplace(8, CBORValue::array(std::move(sections)));
  fields.emplace(9, CBORValue::byteString(sectionSetSHA256_));
  return CBOR::encodeRecordMap(std::move(fields), BackupFormatV1::manifestRootSchemaIdentifier, Limits::manifestRoot);
}

std::expected<BackupManifestRootV1, BackupGraphV1Error> BackupManifestRootV1::decode(ByteView plaintext) {
  const auto root =
      CBOR::decodeRecordMap(plaintext, Limits::manifestRoot, BackupFormatV1::manifestRootSchemaIdentifier, lastKey);
  if (!root) return std::unexpected(root.error());
  if (!hasFieldShapes(*root)) return std::unexpected(BackupGraphV1Error::malformedArtifact);

  const auto createdAt = CBOR::timestamp(CBOR::field(*root, 4));
  if (!createdAt) return std::unexpected(createdAt.error());
  auto counts = BackupManifestCountsV1::fromCBOR(CBOR::field(*root, 5));
  if (!counts) return std::unexpected(counts.error());
  auto sections = readSections(CBOR::field(*root, 8));
  if (!sections) return std::unexpected(sections.error());
  return make(CBOR::ownedByteString(CBOR::field(*root, 1)), CBOR::ownedByteString(CBOR::field(*root, 2)),
              CBOR::ownedByteString(CBOR::field(*root, 3)), *createdAt, std::move(*counts),
              CBOR::unsignedInteger(CBOR::field(*root, 6)), CBOR::ownedByteString(CBOR::field(*root, 7)),
              std::move(*sections), CBOR::ownedByteString(CBOR::field(*root, 9)));
}

}  // namespace galdrine::format
