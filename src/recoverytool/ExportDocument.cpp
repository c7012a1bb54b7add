#include "recoverytool/ExportDocument.hpp"

#include <utility>

namespace galdrine::recoverytool {

namespace {

std::string_view statusText(recovery::RecoveryExportStatus status) {
  switch (status) {
    case recovery::RecoveryExportStatus::completed:
      return "completed";
    case recovery::RecoveryExportStatus::completedWithIssues:
      return "completed-with-issues";
  }
  std::unreachable();
}

}  // namespace

ExportDocument ExportDocument::from(const recovery::RecoveryExportResult& result, std::string selectionCode) {
  return {std::string(exportSchemaIdentifier),
          std::string(statusText(result.status)),
          std::move(selectionCode),
          result.totalItemCount,
          result.recoveredItemCount,
          result.totalResourceCount,
          result.recoveredResourceCount,
          result.failedResourceCount};
}

}  // namespace galdrine::recoverytool
