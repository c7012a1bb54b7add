#pragma once
// ExportDocument is what export prints: the code it was given and how much of the snapshot
// was recovered. "completed-with-issues" is still a success; the counts tell what is missing.

#include <cstdint>
#include <string>
#include <string_view>

#include "recovery/export/RecoveryExportResult.hpp"

namespace galdrine::recoverytool {

struct ExportDocument {
  static constexpr std::string_view exportSchemaIdentifier = "com.galdrine.recovery.cli-export.v1";

  std::string schemaIdentifier;
  std::string status;
  std::string selectedSnapshotCode;
  std::int64_t totalItemCount = 0;
  std::int64_t recoveredItemCount = 0;
  std::int64_t totalResourceCount = 0;
  std::int64_t recoveredResourceCount = 0;
  std::int64_t failedResourceCount = 0;

  // from builds the document of a finished export. The result's location and identifiers
  // stay out of it.
  [[nodiscard]] static ExportDocument from(const recovery::RecoveryExportResult& result, std::string selectionCode);

  friend bool operator==(const ExportDocument&, const ExportDocument&) = default;
};

}  // namespace galdrine::recoverytool
