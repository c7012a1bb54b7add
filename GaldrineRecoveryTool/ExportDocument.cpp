#include "GaldrineRecoveryTool/ExportDocument.hpp"

#include <utility>

namespace {

std::string_view statusText(GaldrineRecoveryExportStatusV1 status) {
  switch (status) {
    case GaldrineRecoveryExportStatusV1::completed: return "completed";
    case GaldrineRecoveryExportStatusV1::completedWithIssues: return "completed-with-issues";
  }
  std::unreachable();
}

}  // namespace

ExportDocument ExportDocument::from(const GaldrineRecoveryExportResultV1& result, std::string selectionCode) {
  return {std::string(exportSchemaIdentifier),
          std::string(statusText(result.status)),
          std::move(selectionCode),
          result.totalItemCount,
          result.recoveredItemCount,
          result.totalResourceCount,
          result.recoveredResourceCount,
          result.failedResourceCount};
}
