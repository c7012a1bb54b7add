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

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1Error.hpp"

namespace GaldrineRecoveryExporterV1 {

struct ExportModel {
  // maximumRecordCount bounds the records of one export; more fail with resourceLimitExceeded.
  static constexpr std::size_t maximumRecordCount = 2'000'000;

  std::unordered_map<GaldrineBackupIdentifierV1, GaldrineBackupPayloadKeyRecordV1, GaldrineBackupIdentifierHasherV1>
      payloadKeys;
  std::vector<GaldrineBackupMediaItemRecordV1> items;
  std::vector<GaldrineBackupMediaResourceRecordV1> resources;
  std::vector<GaldrineBackupAlbumFolderRecordV1> folders;
  std::vector<GaldrineBackupAlbumRecordV1> albums;
  std::vector<GaldrineBackupAlbumMembershipRecordV1> memberships;
  std::vector<GaldrineBackupTombstoneRecordV1> tombstones;
};

// requireRecordCountWithinLimit: `recordCount` records pass when they are at most
// `maximumRecordCount` (resourceLimitExceeded above).
[[nodiscard]] std::expected<void, GaldrineRecoveryExporterV1Error> requireRecordCountWithinLimit(
    std::size_t recordCount, std::size_t maximumRecordCount = ExportModel::maximumRecordCount);

// exportModel copies each record into the field of its kind and sorts the lists. A payload key
// identifier that comes twice is integrityFailure; then more than `maximumRecordCount` records
// are resourceLimitExceeded, found before any other record is copied. On failure no model is
// given. Exports use the form with ExportModel::maximumRecordCount; the other serves tests of
// the order of the two checks without millions of records.
[[nodiscard]] std::expected<ExportModel, GaldrineRecoveryExporterV1Error> exportModel(
    std::span<const GaldrineBackupManifestRecordV1> records);
[[nodiscard]] std::expected<ExportModel, GaldrineRecoveryExporterV1Error> exportModel(
    std::span<const GaldrineBackupManifestRecordV1> records, std::size_t maximumRecordCount);

}  // namespace GaldrineRecoveryExporterV1
