#include "writer/BackupManifestAssembly.hpp"

#include <algorithm>
#include <bit>
#include <unordered_set>

#include "format/graph/BackupGraphV1.hpp"
#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"

namespace galdrine::writer {

namespace {

using Failure = BackupWriterFailure;
using Record = format::BackupManifestRecordV1;
using Kind = format::BackupManifestSectionKindV1;

// Room a section's map and each blob's array and string headers can take beyond the bytes of
// sort key and record: generous, so that an estimate never falls short of the encoding.
constexpr std::uint64_t sectionOverheadByteCount = 512;
constexpr std::uint64_t blobOverheadByteCount = 16;

template <typename RecordType>
[[nodiscard]] std::expected<void, Failure> append(std::vector<Record>& records,
                                                  std::expected<RecordType, format::BackupManifestRecordV1Error> made) {
  if (!made) return backupWriterFailure(made.error());
  records.emplace_back(std::move(*made));
  return {};
}

[[nodiscard]] std::optional<ByteView> optionalView(const std::optional<format::BackupIdentifierV1>& identifier) {
  if (!identifier) return std::nullopt;
  return ByteView(*identifier);
}

[[nodiscard]] std::vector<ByteView> sortedViews(std::span<const format::BackupIdentifierV1> identifiers) {
  std::vector<ByteView> views(identifiers.begin(), identifiers.end());
  std::ranges::sort(views, ByteOrder::precedes);
  return views;
}

void appendKeys(std::vector<Record>& records, const BackupPayloadPlan& plan) {
  std::unordered_set<format::BackupIdentifierV1, format::BackupIdentifierHasher> kept;
  for (const auto& key : plan.newKeyRecords) {
    kept.insert(key.identifier());
    records.emplace_back(key);
  }
  for (const auto& resource : plan.resources) {
    if (resource.reused && kept.insert(resource.reused->payloadKey->identifier()).second)
      records.emplace_back(*resource.reused->payloadKey);
  }
}

[[nodiscard]] std::expected<void, Failure> appendItem(std::vector<Record>& records, const BackupItemDescription& item) {
  std::vector<format::BackupIdentifierV1> identifiers;
  for (const auto& resource : item.resources) identifiers.push_back(resource.identifier);
  const auto resourceIdentifiers = sortedViews(identifiers);
  return append(records, format::BackupMediaItemRecordV1::make(
                             {item.identifier, item.kind, item.displayDateUTCMilliseconds, item.displayTimeZoneSeconds,
                              item.dateSource, item.importDateUTCMilliseconds, item.originalFilename, item.favorite,
                              item.lifecycle, item.trashDateUTCMilliseconds, item.sourceType, item.entitlementCounted,
                              resourceIdentifiers}));
}

[[nodiscard]] std::expected<void, Failure> appendResource(std::vector<Record>& records,
                                                          const BackupPlannedResource& planned) {
  const auto& description = *planned.description;
  std::optional<std::uint64_t> width;
  std::optional<std::uint64_t> height;
  if (description.pixelSize) {
    width = description.pixelSize->width;
    height = description.pixelSize->height;
  }
  std::optional<std::uint64_t> durationBits;
  if (description.durationSeconds) durationBits = std::bit_cast<std::uint64_t>(*description.durationSeconds);
  return append(records, format::BackupMediaResourceRecordV1::make(
                             {description.identifier, planned.item->identifier, description.role,
                              description.uniformTypeIdentifier, planned.plaintextByteCount, width, height,
                              durationBits, planned.plaintextSHA256, planned.payloadKeyIdentifier, planned.parts}));
}

[[nodiscard]] std::expected<void, Failure> appendArrangement(std::vector<Record>& records,
                                                             const BackupLibrarySnapshot& library) {
  for (const auto& folder : library.folders) {
    if (auto done = append(records, format::BackupAlbumFolderRecordV1::make(
                                        {folder.identifier, optionalView(folder.parentFolderIdentifier), folder.name,
                                         folder.manualPosition}));
        !done)
      return done;
  }
  for (const auto& album : library.albums) {
    if (auto done = append(records, format::BackupAlbumRecordV1::make(
                                        {album.identifier, optionalView(album.parentFolderIdentifier), album.name,
                                         optionalView(album.coverItemIdentifier), album.sortMode,
                                         album.manualOrderEnabled, album.manualPosition}));
        !done)
      return done;
  }
  for (const auto& membership : library.memberships) {
    if (auto done = append(records, format::BackupAlbumMembershipRecordV1::make(
                                        {membership.albumIdentifier, membership.itemIdentifier,
                                         membership.manualPosition, membership.addedAtUTCMilliseconds}));
        !done)
      return done;
  }
  for (const auto& tombstone : library.tombstones) {
    const auto resourceIdentifiers = sortedViews(tombstone.resourceIdentifiers);
    if (auto done =
            append(records, format::BackupTombstoneRecordV1::make(
                                {tombstone.itemIdentifier, tombstone.deletedAtUTCMilliseconds, resourceIdentifiers}));
        !done)
      return done;
  }
  return {};
}

[[nodiscard]] bool recordPrecedes(const Record& left, const Record& right) {
  if (left.kind() != right.kind()) return left.kind() < right.kind();
  return ByteOrder::precedes(left.sortKey(), right.sortKey());
}

struct SectionCut {
  Kind kind;
  std::vector<format::BackupManifestRecordBlobV1> blobs;
  std::uint64_t estimatedByteCount = sectionOverheadByteCount;
};

}  // namespace

namespace BackupManifestAssembly {

std::expected<std::vector<Record>, Failure> records(const BackupLibrarySnapshot& library,
                                                    const BackupPayloadPlan& plan) {
  std::vector<Record> records;
  appendKeys(records, plan);
  for (const auto& item : library.items) {
    if (auto done = appendItem(records, item); !done) return std::unexpected(done.error());
  }
  for (const auto& resource : plan.resources) {
    if (auto done = appendResource(records, resource); !done) return std::unexpected(done.error());
  }
  if (auto done = appendArrangement(records, library); !done) return std::unexpected(done.error());
  std::ranges::stable_sort(records, recordPrecedes);
  return records;
}

std::expected<std::vector<format::BackupManifestSectionV1>, Failure> sections(
    std::span<const Record> records, const format::BackupIdentifierV1& manifestIdentifier,
    const format::BackupIdentifierV1& libraryDomainIdentifier, const BackupPayloadLayout& layout,
    const SectionIdentifierSource& nextIdentifier) {
  std::vector<format::BackupManifestSectionV1> sections;
  std::optional<SectionCut> open;
  const auto close = [&]() -> std::expected<void, Failure> {
    if (!open) return {};
    if (sections.size() >= format::BackupFormatV1::maximumManifestSectionCount)
      return backupWriterFailure(BackupWriterError::manifestTooLarge);
    const auto identifier = nextIdentifier();
    if (!identifier) return backupWriterFailure(identifier.error());
    auto section = format::BackupManifestSectionV1::make(
        Bytes(identifier->begin(), identifier->end()), Bytes(manifestIdentifier.begin(), manifestIdentifier.end()),
        Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()), sections.size(), open->kind,
        format::BackupManifestCompressionV1::none, std::move(open->blobs));
    open.reset();
    if (!section) return backupWriterFailure(section.error());
    if (!format::BackupGraphV1::manifestSectionFitsPlaintextLimit(*section))
      return backupWriterFailure(BackupWriterError::manifestTooLarge);
    sections.push_back(std::move(*section));
    return {};
  };
  for (const Record& record : records) {
    auto blob = format::BackupManifestRecordCodecV1::recordBlob(record);
    if (!blob) return backupWriterFailure(blob.error());
    const std::uint64_t blobByteCount = blob->sortKey().size() + blob->canonicalRecord().size() + blobOverheadByteCount;
    const bool startsNew =
        !open || open->kind != record.kind() || open->blobs.size() >= layout.maximumSectionRecordCount ||
        open->estimatedByteCount + blobByteCount > format::BackupFormatV1::maximumManifestSectionPlaintextByteCount;
    if (startsNew) {
      if (auto done = close(); !done) return std::unexpected(done.error());
      open = SectionCut{record.kind(), {}, sectionOverheadByteCount};
    }
    open->blobs.push_back(std::move(*blob));
    open->estimatedByteCount += blobByteCount;
  }
  if (auto done = close(); !done) return std::unexpected(done.error());
  return sections;
}

}  // namespace BackupManifestAssembly

}  // namespace galdrine::writer
