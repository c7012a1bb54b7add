#pragma once
// RecoveryExportResult is what a published export reports: where its directory stands, which
// commit and snapshot it came from, and how many items and resources it recovered.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::recovery {

// RecoveryExportStatus says whether an export recovered every resource of its snapshot. Both
// cases are a finished export: missing or damaged payloads only mark their resources, so a
// partial recovery still publishes its output. The raw values are the texts the recovery
// report writes.
enum class RecoveryExportStatus : std::uint8_t {
  completed,
  completedWithIssues,
};

struct RecoveryExportResult {
  std::filesystem::path outputPath;
  Bytes selectedCommitIdentifier;
  Bytes selectedSnapshotIdentifier;
  RecoveryExportStatus status = RecoveryExportStatus::completed;
  std::int64_t totalItemCount = 0;
  std::int64_t recoveredItemCount = 0;
  std::int64_t totalResourceCount = 0;
  std::int64_t recoveredResourceCount = 0;
  std::int64_t failedResourceCount = 0;

  friend bool operator==(const RecoveryExportResult&, const RecoveryExportResult&) = default;
};

}  // namespace galdrine::recovery

namespace galdrine {

template <>
struct RawValueTable<recovery::RecoveryExportStatus> {
  static constexpr std::array<std::string_view, 2> rawValues{"completed", "completed-with-issues"};
};

}  // namespace galdrine
