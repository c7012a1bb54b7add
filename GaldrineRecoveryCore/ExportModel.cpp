#include "GaldrineRecoveryCore/ExportModel.hpp"

#include <algorithm>
#include <variant>

namespace GaldrineRecoveryExporterV1 {

namespace {

// ModelFiller puts one record into the field of its kind; it gives false for a payload key
// whose identifier the model holds already.
struct ModelFiller {
  ExportModel& model;

  bool operator()(const GaldrineBackupPayloadKeyRecordV1& record) const {
    return model.payloadKeys.try_emplace(record.identifier(), record).second;
  }
  bool operator()(const GaldrineBackupMediaItemRecordV1& record) const { return append(model.items, record); }
  bool operator()(const GaldrineBackupMediaResourceRecordV1& record) const { return append(model.resources, record); }
  bool operator()(const GaldrineBackupAlbumFolderRecordV1& record) const { return append(model.folders, record); }
  bool operator()(const GaldrineBackupAlbumRecordV1& record) const { return append(model.albums, record); }
  bool operator()(const GaldrineBackupAlbumMembershipRecordV1& record) const { return append(model.memberships, record); }
  bool operator()(const GaldrineBackupTombstoneRecordV1& record) const { return append(model.tombstones, record); }

  template <typename Record>
  static bool append(std::vector<Record>& list, const Record& record) {
    list.push_back(record);
    return true;
  }
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

std::expected<ExportModel, GaldrineRecoveryExporterV1Error> exportModel(std::span<const GaldrineBackupManifestRecordV1> records) {
  ExportModel model;
  const ModelFiller filler{model};
  for (const GaldrineBackupManifestRecordV1& record : records) {
    if (!std::visit(filler, record.variant())) return std::unexpected(GaldrineRecoveryExporterV1Error::integrityFailure);
  }
  if (records.size() > ExportModel::maximumRecordCount) {
    return std::unexpected(GaldrineRecoveryExporterV1Error::resourceLimitExceeded);
  }
  sortLists(model);
  return model;
}

}  // namespace GaldrineRecoveryExporterV1
