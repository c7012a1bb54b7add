#include "GaldrineRecoveryCore/ExportModel.hpp"

#include <algorithm>
#include <variant>

namespace GaldrineRecoveryExporterV1 {

namespace {

// KeyFiller collects the payload keys; it gives false for an identifier the model holds
// already, and passes over every other kind.
struct KeyFiller {
  ExportModel& model;

  bool operator()(const GaldrineBackupPayloadKeyRecordV1& record) const {
    return model.payloadKeys.try_emplace(record.identifier(), record).second;
  }
  template <typename Record>
  bool operator()(const Record&) const {
    return true;
  }
};

// ListFiller appends every record but a payload key to the list of its kind.
struct ListFiller {
  ExportModel& model;

  void operator()(const GaldrineBackupPayloadKeyRecordV1&) const {}
  void operator()(const GaldrineBackupMediaItemRecordV1& record) const { model.items.push_back(record); }
  void operator()(const GaldrineBackupMediaResourceRecordV1& record) const { model.resources.push_back(record); }
  void operator()(const GaldrineBackupAlbumFolderRecordV1& record) const { model.folders.push_back(record); }
  void operator()(const GaldrineBackupAlbumRecordV1& record) const { model.albums.push_back(record); }
  void operator()(const GaldrineBackupAlbumMembershipRecordV1& record) const { model.memberships.push_back(record); }
  void operator()(const GaldrineBackupTombstoneRecordV1& record) const { model.tombstones.push_back(record); }
};

// The arrays compare lexicographically as unsigned bytes, which is the system's byte order for
// keys of one fixed length.
void sortLists(ExportModel& model) {
  std::ranges::stable_sort(model.items, {}, &GaldrineBackupMediaItemRecordV1::identifier);
  std::ranges::stable_sort(model.resources, {}, &GaldrineBackupMediaResourceRecordV1::identifier);
  std::ranges::stable_sort(model.folders, {}, &GaldrineBackupAlbumFolderRecordV1::identifier);
  std::ranges::stable_sort(model.albums, {}, &GaldrineBackupAlbumRecordV1::identifier);
  std::ranges::stable_sort(model.memberships, {}, &GaldrineBackupAlbumMembershipRecordV1::key);
  std::ranges::stable_sort(model.tombstones, {}, &GaldrineBackupTombstoneRecordV1::itemIdentifier);
}

}  // namespace

std::expected<void, GaldrineRecoveryExporterV1Error> requireRecordCountWithinLimit(std::size_t recordCount,
                                                                                   std::size_t maximumRecordCount) {
  if (recordCount > maximumRecordCount) return std::unexpected(GaldrineRecoveryExporterV1Error::resourceLimitExceeded);
  return {};
}

std::expected<ExportModel, GaldrineRecoveryExporterV1Error> exportModel(std::span<const GaldrineBackupManifestRecordV1> records) {
  return exportModel(records, ExportModel::maximumRecordCount);
}

std::expected<ExportModel, GaldrineRecoveryExporterV1Error> exportModel(std::span<const GaldrineBackupManifestRecordV1> records,
                                                                        std::size_t maximumRecordCount) {
  ExportModel model;
  const KeyFiller keys{model};
  for (const GaldrineBackupManifestRecordV1& record : records) {
    if (!std::visit(keys, record.variant())) return std::unexpected(GaldrineRecoveryExporterV1Error::integrityFailure);
  }
  if (auto counted = requireRecordCountWithinLimit(records.size(), maximumRecordCount); !counted) {
    return std::unexpected(counted.error());
  }
  const ListFiller lists{model};
  for (const GaldrineBackupManifestRecordV1& record : records) std::visit(lists, record.variant());
  sortLists(model);
  return model;
}

}  // namespace GaldrineRecoveryExporterV1
