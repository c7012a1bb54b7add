#pragma once
// ExportModel is one snapshot's manifest records sorted by kind, the form in which the export
// plans paths and writes the mapping. Every list is ascending by identifier in the system's
// byte order (memberships by album, then item), and records with equal keys keep the order in
// which they came.

#include <cstddef>
#include <expected>
#include <span>
#include <unordered_map>
#include <vector>

#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "recovery/export/RecoveryExporterError.hpp"

namespace galdrine::recovery {

struct ExportModel {
  // maximumRecordCount bounds the records of one export; more fail with resourceLimitExceeded.
  static constexpr std::size_t maximumRecordCount = 2'000'000;

  std::unordered_map<format::BackupIdentifierV1, format::BackupPayloadKeyRecordV1, format::BackupIdentifierHasher>
      payloadKeys;
  std::vector<format::BackupMediaItemRecordV1> items;
  std::vector<format::BackupMediaResourceRecordV1> resources;
  std::vector<format::BackupAlbumFolderRecordV1> folders;
  std::vector<format::BackupAlbumRecordV1> albums;
  std::vector<format::BackupAlbumMembershipRecordV1> memberships;
  std::vector<format::BackupTombstoneRecordV1> tombstones;
};

// exportModel copies each record into the field of its kind and sorts the lists. A payload key
// identifier that comes twice is integrityFailure; then more than `maximumRecordCount` records
// are resourceLimitExceeded, found before any other record is copied. On failure no model is
// given. Exports keep the default limit.
[[nodiscard]] std::expected<ExportModel, RecoveryExporterError> exportModel(
    std::span<const format::BackupManifestRecordV1> records,
    std::size_t maximumRecordCount = ExportModel::maximumRecordCount);

}  // namespace galdrine::recovery
