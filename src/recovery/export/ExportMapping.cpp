#include "recovery/export/ExportMapping.hpp"

#include <array>
#include <bit>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "format/header/BackupFormatV1.hpp"
#include "platform/RawValue.hpp"
#include "recovery/export/RecoveryExportResult.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;

// The document texts of the record enumerations, in case order.
constexpr std::array<std::string_view, 3> kindTexts{"photo", "video", "live-photo"};
constexpr std::array<std::string_view, 5> dateSourceTexts{"photos", "embedded", "file", "import", "camera"};
constexpr std::array<std::string_view, 2> lifecycleTexts{"active", "trash"};
constexpr std::array<std::string_view, 5> sourceTypeTexts{"photos", "files", "share-extension", "private-camera",
                                                          "restore"};
constexpr std::array<std::string_view, 4> roleTexts{"primary", "paired-video", "original", "rendered"};
constexpr std::array<std::string_view, 5> sortModeTexts{"manual", "display-date-ascending", "display-date-descending",
                                                        "import-date-ascending", "import-date-descending"};

// documentText gives a case's text; a table that misses a case does not compile.
template <typename Enumeration, std::size_t Count>
[[nodiscard]] std::string documentText(Enumeration value, const std::array<std::string_view, Count>& texts) {
  static_assert(Count == allCases<Enumeration>.size());
  return std::string(texts[static_cast<std::size_t>(std::to_underlying(value))]);
}

[[nodiscard]] std::string hex(ByteView bytes) { return ByteText::lowerHex(bytes); }

template <typename FixedBytes>
[[nodiscard]] std::optional<std::string> optionalHex(const std::optional<FixedBytes>& bytes) {
  if (!bytes) return std::nullopt;
  return hex(*bytes);
}

using PlanIndex =
    std::unordered_map<format::BackupIdentifierV1, const PlannedResource*, format::BackupIdentifierHasher>;

[[nodiscard]] PlanIndex indexed(std::span<const PlannedResource> plan) {
  PlanIndex index;
  index.reserve(plan.size());
  for (const PlannedResource& planned : plan) index.try_emplace(planned.resource->identifier(), &planned);
  return index;
}

[[nodiscard]] const ResourceOutcome* outcomeOf(const ResourceOutcomes& outcomes,
                                               const format::BackupIdentifierV1& resource) {
  const auto found = outcomes.find(resource);
  return found == outcomes.end() ? nullptr : &found->second;
}

[[nodiscard]] MappingV1::Folder folderRow(const format::BackupAlbumFolderRecordV1& folder) {
  return {hex(folder.identifier()), optionalHex(folder.parentFolderIdentifier()), folder.name(),
          folder.manualPosition()};
}

[[nodiscard]] MappingV1::Album albumRow(const format::BackupAlbumRecordV1& album) {
  return {hex(album.identifier()),
          optionalHex(album.parentFolderIdentifier()),
          album.name(),
          optionalHex(album.coverItemIdentifier()),
          documentText(album.sortMode(), sortModeTexts),
          album.manualOrderEnabled(),
          album.manualPosition()};
}

[[nodiscard]] MappingV1::Membership membershipRow(const format::BackupAlbumMembershipRecordV1& membership) {
  return {hex(membership.albumIdentifier()), hex(membership.itemIdentifier()), membership.manualPosition(),
          membership.addedAtUTCMilliseconds()};
}

[[nodiscard]] MappingV1::Tombstone tombstoneRow(const format::BackupTombstoneRecordV1& tombstone) {
  MappingV1::Tombstone row{hex(tombstone.itemIdentifier()), tombstone.deletedAtUTCMilliseconds(), {}};
  for (const format::BackupIdentifierV1& resource : tombstone.resourceIdentifiers())
    row.resourceIdentifiers.push_back(hex(resource));
  return row;
}

[[nodiscard]] MappingV1::Resource resourceRow(const PlannedResource& planned, const ResourceOutcome& outcome) {
  const format::BackupMediaResourceRecordV1& resource = *planned.resource;
  std::optional<double> durationSeconds;
  if (resource.durationIEEE754Bits()) durationSeconds = std::bit_cast<double>(*resource.durationIEEE754Bits());
  const bool recovered = outcome.isRecovered();
  return {hex(resource.identifier()),
          documentText(resource.role(), roleTexts),
          resource.originalUTI(),
          resource.plaintextByteCount(),
          resource.pixelWidth(),
          resource.pixelHeight(),
          durationSeconds,
          hex(resource.plaintextSHA256()),
          planned.relativePath,
          recovered,
          recovered ? optionalHex(outcome.recoveredSHA256) : std::nullopt};
}

// itemStatus: an item with nothing to recover, or everything recovered, is recovered.
[[nodiscard]] std::string itemStatus(std::size_t recoveredCount, std::size_t resourceCount) {
  if (recoveredCount == resourceCount) return "recovered";
  if (recoveredCount == 0) return "unavailable";
  return "partially-recovered";
}

[[nodiscard]] MappingV1::Item itemRow(const format::BackupMediaItemRecordV1& item) {
  return {hex(item.identifier()),
          documentText(item.kind(), kindTexts),
          item.displayDateUTCMilliseconds(),
          item.displayTimeZoneSeconds(),
          documentText(item.dateSource(), dateSourceTexts),
          item.importDateUTCMilliseconds(),
          item.originalFilename(),
          item.favorite(),
          documentText(item.lifecycle(), lifecycleTexts),
          item.trashDateUTCMilliseconds(),
          documentText(item.sourceType(), sourceTypeTexts),
          item.entitlementCounted(),
          {},
          {}};
}

[[nodiscard]] std::expected<MappingV1::Item, Error> itemWithResources(const format::BackupMediaItemRecordV1& item,
                                                                      const PlanIndex& plan,
                                                                      const ResourceOutcomes& outcomes) {
  MappingV1::Item row = itemRow(item);
  std::size_t recoveredCount = 0;
  for (const format::BackupIdentifierV1& identifier : item.resourceIdentifiers()) {
    const auto planned = plan.find(identifier);
    const ResourceOutcome* outcome = outcomeOf(outcomes, identifier);
    if (planned == plan.end() || outcome == nullptr) return std::unexpected(Error::integrityFailure);
    row.resources.push_back(resourceRow(*planned->second, *outcome));
    if (row.resources.back().recovered) ++recoveredCount;
  }
  row.status = itemStatus(recoveredCount, row.resources.size());
  return row;
}

// isItemRecovered: every resource the item lists has an outcome, and a recovered one.
[[nodiscard]] std::expected<bool, Error> isItemRecovered(const format::BackupMediaItemRecordV1& item,
                                                         const ResourceOutcomes& outcomes) {
  bool recovered = true;
  for (const format::BackupIdentifierV1& identifier : item.resourceIdentifiers()) {
    const ResourceOutcome* outcome = outcomeOf(outcomes, identifier);
    if (outcome == nullptr) return std::unexpected(Error::integrityFailure);
    recovered = recovered && outcome->isRecovered();
  }
  return recovered;
}

[[nodiscard]] ReportV1::Failure failureRow(const PlannedResource& planned, const ResourceIssue& issue) {
  return {hex(planned.item->identifier()), hex(planned.resource->identifier()),
          optionalHex(issue.payloadArtifactIdentifier), std::string(rawValue(issue.reason))};
}

}  // namespace

std::expected<MappingV1, Error> mappingDocument(const ExportSelection& selected, const ExportModel& model,
                                                std::span<const PlannedResource> plan,
                                                const ResourceOutcomes& outcomes) {
  const PlanIndex planIndex = indexed(plan);
  MappingV1 document{std::string(MappingV1::currentSchemaIdentifier),
                     std::string(format::BackupFormatV1::canonicalFormatIdentifier),
                     format::BackupFormatV1::formatVersion,
                     hex(selected.commitIdentifier),
                     hex(selected.snapshotIdentifier),
                     selected.snapshotCreatedAtUTCMilliseconds,
                     std::string(MappingV1::allItemsFolderStrategy),
                     {},
                     {},
                     {},
                     {},
                     {}};
  for (const auto& folder : model.folders) document.folders.push_back(folderRow(folder));
  for (const auto& album : model.albums) document.albums.push_back(albumRow(album));
  for (const auto& membership : model.memberships) document.memberships.push_back(membershipRow(membership));
  for (const auto& item : model.items) {
    auto row = itemWithResources(item, planIndex, outcomes);
    if (!row) return std::unexpected(row.error());
    document.items.push_back(std::move(*row));
  }
  for (const auto& tombstone : model.tombstones) document.tombstones.push_back(tombstoneRow(tombstone));
  return document;
}

std::expected<ReportV1, Error> reportDocument(const ExportSelection& selected, const ExportModel& model,
                                              std::span<const PlannedResource> plan, const ResourceOutcomes& outcomes) {
  ReportV1 document{std::string(ReportV1::currentSchemaIdentifier),
                    {},
                    hex(selected.commitIdentifier),
                    hex(selected.snapshotIdentifier),
                    0,
                    0,
                    0,
                    0,
                    0,
                    {}};
  for (const PlannedResource& planned : plan) {
    const ResourceOutcome* outcome = outcomeOf(outcomes, planned.resource->identifier());
    if (outcome == nullptr) return std::unexpected(Error::integrityFailure);
    for (const ResourceIssue& issue : outcome->issues) document.failures.push_back(failureRow(planned, issue));
    if (outcome->isRecovered()) ++document.recoveredResourceCount;
  }
  for (const auto& item : model.items) {
    const auto recovered = isItemRecovered(item, outcomes);
    if (!recovered) return std::unexpected(recovered.error());
    if (*recovered) ++document.recoveredItemCount;
  }
  document.totalItemCount = static_cast<std::int64_t>(model.items.size());
  document.totalResourceCount = static_cast<std::int64_t>(plan.size());
  document.failedResourceCount = document.totalResourceCount - document.recoveredResourceCount;
  const auto status =
      document.failures.empty() ? RecoveryExportStatus::completed : RecoveryExportStatus::completedWithIssues;
  document.status = std::string(rawValue(status));
  return document;
}

}  // namespace galdrine::recovery
