#pragma once
// GaldrineRecoveryExportResultV1 is what a published export reports: where its directory
// stands, which commit and snapshot it came from, and how many items and resources it
// recovered.

#include <cstdint>
#include <filesystem>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExportStatusV1.hpp"

struct GaldrineRecoveryExportResultV1 {
  std::filesystem::path outputURL;
  Bytes selectedCommitIdentifier;
  Bytes selectedSnapshotIdentifier;
  GaldrineRecoveryExportStatusV1 status = GaldrineRecoveryExportStatusV1::completed;
  std::int64_t totalItemCount = 0;
  std::int64_t recoveredItemCount = 0;
  std::int64_t totalResourceCount = 0;
  std::int64_t recoveredResourceCount = 0;
  std::int64_t failedResourceCount = 0;

  friend bool operator==(const GaldrineRecoveryExportResultV1&, const GaldrineRecoveryExportResultV1&) = default;
};
