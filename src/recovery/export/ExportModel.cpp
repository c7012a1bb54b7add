#include "recovery/export/ExportModel.hpp"

#include <algorithm>
#include <variant>

namespace galdrine::recovery {

namespace {

// KeyFiller collects the payload keys; it gives false for an identifier the model holds
// already, and passes over every other kind.
struct KeyFiller {
  ExportModel& model;

  bool operator()(const format::BackupPayloadKeyRecordV1& record) const {
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

  void operator()(const format::BackupPayloadKeyRecordV1&) const {}
  void operator()(const format::BackupMediaItemRecordV1& record) const { model.items.push_back(record); }
  void operator()(const format::BackupMediaResourceRecordV1& record) const { model.resources.push_back(record); }
  void operator()(const format::BackupAlbumFolderRecordV1& record) const { model.folders.push_back(record); }
  void operator()(const format::BackupAlbumRecordV1& record) const { model.albums.push_back(record); }
  void operator()(const format::BackupAlbumMembershipRecordV1& record) const { model.memberships.push_back(record); }
  void operator()(const format::BackupTombstoneRecordV1& record) const { model.tombstones.push_back(record); }
};

// The arrays compare lexicographically as unsigned bytes, which is the system's byte order for
// keys of one fixed length.
void sortLists(ExportModel& model) {
  std::ranges::stable_sort(model.items, {}, &format::BackupMediaItemRecordV1::identifier);
  std::ranges::stable_sort(model.resources, {}, &format::BackupMediaResourceRecordV1::identifier);
  std::ranges::stable_sort(model.folders, {}, &format::BackupAlbumFolderRecordV1::identifier);
  std::ranges::stable_sort(model.albums, {}, &format::BackupAlbumRecordV1::identifier);
  std::ranges::stable_sort(model.memberships, {}, &format::BackupAlbumMembershipRecordV1::key);
  std::ranges::stable_sort(model.tombstones, {}, &format::BackupTombstoneRecordV1::itemIdentifier);
}

}  // namespace

std::expected<ExportModel, RecoveryExporterError> exportModel(std::span<const format::BackupManifestRecordV1> records,
                                                              std::size_t maximumRecordCount) {
  ExportModel model;
  const KeyFiller keys{model};
  for (const format::BackupManifestRecordV1& record : records) {
    if (!std::visit(keys, record.variant())) return std::unexpected(RecoveryExporterError::integrityFailure);
  }
  if (records.size() > maximumRecordCount) return std::unexpected(RecoveryExporterError::resourceLimitExceeded);
  const ListFiller lists{model};
  for (const format::BackupManifestRecordV1& record : records) std::visit(lists, record.variant());
  sortLists(model);
  return model;
}

}  // namespace galdrine::recovery
