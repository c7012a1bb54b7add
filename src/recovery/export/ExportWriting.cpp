#include "recovery/export/ExportWriting.hpp"

#include <utility>

#include "format/package/DirectorySynchronization.hpp"
#include "recovery/export/ExportDocumentText.hpp"
#include "recovery/export/ExportMapping.hpp"
#include "recovery/export/ResourcePlan.hpp"
#include "recovery/export/ResourceRecovery.hpp"
#include "recovery/export/StagingDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryExporterError;
using FaultPoint = RecoveryExportFaultPoint;
using Result = RecoveryExportResult;

constexpr std::string_view mappingFileName = "library-mapping.json";
constexpr std::string_view reportFileName = "recovery-report.json";

[[nodiscard]] std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

// stopsAt: the caller asked the export to fail at `point`.
[[nodiscard]] bool stopsAt(std::optional<FaultPoint> faultPoint, FaultPoint point) { return faultPoint == point; }

[[nodiscard]] std::expected<void, Error> synchronized(const fs::path& directory) {
  if (!format::DirectorySynchronization::synchronizeAfterMutation(directory)) return failure(Error::outputWriteFailed);
  return {};
}

[[nodiscard]] std::expected<ExportSelection, Error> selectionOf(const RestoreSession& session) {
  const auto commit = format::FixedBytes::identifier(session.selected().authenticatedCommit.commit().identifier());
  const auto snapshot = format::FixedBytes::identifier(session.selected().snapshot.identifier());
  if (!commit || !snapshot) return failure(Error::integrityFailure);
  return ExportSelection{*commit, *snapshot, session.selected().snapshot.createdAtUTCMilliseconds()};
}

// recoverAll recovers the plan in order into `root`, asking for the fault point after the
// first attempt.
[[nodiscard]] std::expected<ResourceOutcomes, Error> recoverAll(const RestoreSession& session, const fs::path& root,
                                                                std::optional<FaultPoint> faultPoint) {
  const PayloadAvailabilityMap availability = payloadAvailability(session.plan(), session.reader().package());
  ResourceOutcomes outcomes;
  outcomes.reserve(session.plan().size());
  for (const PlannedResource& planned : session.plan()) {
    auto outcome = recover(planned, root, session.reader().package(), session.libraryDomainIdentifier(), session.bpmk(),
                           session.model().payloadKeys, availability);
    if (!outcome) return std::unexpected(outcome.error());
    if (!outcomes.try_emplace(planned.resource->identifier(), std::move(*outcome)).second) {
      return failure(Error::integrityFailure);
    }
    if (outcomes.size() == 1 && stopsAt(faultPoint, FaultPoint::afterFirstResourceAttempt)) {
      return failure(Error::outputWriteFailed);
    }
  }
  return outcomes;
}

[[nodiscard]] Result resultOf(const fs::path& destinationPath, const ExportSelection& selection,
                              const ReportV1& report) {
  Result result;
  result.outputPath = destinationPath;
  result.selectedCommitIdentifier.assign(selection.commitIdentifier.begin(), selection.commitIdentifier.end());
  result.selectedSnapshotIdentifier.assign(selection.snapshotIdentifier.begin(), selection.snapshotIdentifier.end());
  result.status = report.failures.empty() ? RecoveryExportStatus::completed : RecoveryExportStatus::completedWithIssues;
  result.totalItemCount = report.totalItemCount;
  result.recoveredItemCount = report.recoveredItemCount;
  result.totalResourceCount = report.totalResourceCount;
  result.recoveredResourceCount = report.recoveredResourceCount;
  result.failedResourceCount = report.failedResourceCount;
  return result;
}

// writeDocuments builds and writes the mapping, then the report, and gives the report.
[[nodiscard]] std::expected<ReportV1, Error> writeDocuments(const RestoreSession& session,
                                                            const ExportSelection& selection,
                                                            const ResourceOutcomes& outcomes, const fs::path& root) {
  const auto mapping = mappingDocument(selection, session.model(), session.plan(), outcomes);
  if (!mapping) return std::unexpected(mapping.error());
  auto report = reportDocument(selection, session.model(), session.plan(), outcomes);
  if (!report) return std::unexpected(report.error());
  if (auto written = writeJSON(*mapping, root / mappingFileName); !written) return std::unexpected(written.error());
  if (auto written = writeJSON(*report, root / reportFileName); !written) return std::unexpected(written.error());
  return std::move(*report);
}

}  // namespace

std::expected<Result, Error> writeExport(const fs::path& destinationPath, const RestoreSession& session,
                                         std::optional<FaultPoint> faultPoint) {
  const auto selection = selectionOf(session);
  if (!selection) return std::unexpected(selection.error());
  auto staging = StagingDirectory::make(destinationPath);
  if (!staging) return std::unexpected(staging.error());
  // From here every way out but publication removes the staging directory (its destructor).
  if (stopsAt(faultPoint, FaultPoint::afterStagingCreated)) return failure(Error::outputWriteFailed);
  const fs::path allItems = staging->path() / allItemsDirectoryName;
  if (auto created = createPrivateDirectory(allItems); !created) return std::unexpected(created.error());

  const auto outcomes = recoverAll(session, staging->path(), faultPoint);
  if (!outcomes) return std::unexpected(outcomes.error());
  if (auto synchronizedItems = synchronized(allItems); !synchronizedItems)
    return std::unexpected(synchronizedItems.error());
  if (stopsAt(faultPoint, FaultPoint::beforeMetadata)) return failure(Error::outputWriteFailed);
  const auto reportDocument = writeDocuments(session, *selection, *outcomes, staging->path());
  if (!reportDocument) return std::unexpected(reportDocument.error());
  if (auto synchronizedRoot = synchronized(staging->path()); !synchronizedRoot)
    return std::unexpected(synchronizedRoot.error());
  if (stopsAt(faultPoint, FaultPoint::beforePublication)) return failure(Error::outputWriteFailed);
  if (auto published = staging->publish(destinationPath); !published) return std::unexpected(published.error());
  return resultOf(destinationPath, *selection, *reportDocument);
}

}  // namespace galdrine::recovery
