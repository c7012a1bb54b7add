#pragma once
// ReportV1 is "recovery-report.json": how an export went, in counts, and one row for each
// issue of a resource that was not recovered. An export that fails leaves no report.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::recovery {

struct ReportV1 {
  static constexpr std::string_view currentSchemaIdentifier = "com.galdrine.recovery.export-report.v1";

  struct Failure {
    std::string itemIdentifier;
    std::string resourceIdentifier;
    std::optional<std::string> payloadArtifactIdentifier;  // absent when no single artifact is at fault
    std::string reason;  // "missing-payload", "unreadable-payload" or "payload-integrity-failure"

    friend bool operator==(const Failure&, const Failure&) = default;
  };

  std::string schemaIdentifier;
  std::string status;  // "completed" or "completed-with-issues"
  std::string selectedCommitIdentifier;
  std::string selectedSnapshotIdentifier;
  std::int64_t totalItemCount = 0;
  std::int64_t recoveredItemCount = 0;
  std::int64_t totalResourceCount = 0;
  std::int64_t recoveredResourceCount = 0;
  std::int64_t failedResourceCount = 0;
  std::vector<Failure> failures;

  friend bool operator==(const ReportV1&, const ReportV1&) = default;
};

}  // namespace galdrine::recovery
