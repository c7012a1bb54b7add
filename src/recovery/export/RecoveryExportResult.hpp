#pragma once
// RecoveryExportResult is what a published export reports: where its directory
// stands, which commit and snapshot it came from, and how many items and resources it
// recovered.

#include <cstdint>
#include <filesystem>

#include "platform/Bytes.hpp"
#include "recovery/export/RecoveryExportStatusV1.hpp"

namespace galdrine::recovery {

struct RecoveryExportResult {
  std::filesystem::path outputPath;
  Bytes selectedCommitIdentifier;
  Bytes selectedSnapshotIdentifier;
  RecoveryExportStatusV1 status = RecoveryExportStatusV1::completed;
  std::int64_t totalItemCount = 0;
  std::int64_t recoveredItemCount = 0;
  std::int64_t totalResourceCount = 0;
  std::int64_t recoveredResourceCount = 0;
  std::int64_t failedResourceCount = 0;

  friend bool operator==(const RecoveryExportResult&, const RecoveryExportResult&) = default;
};

}  // namespace galdrine::recovery
