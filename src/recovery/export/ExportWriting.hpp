#pragma once
// ExportWriting runs the file-system side of one export on a built session: it stages,
// recovers every planned resource into "All Items", writes the two documents, and publishes
// with one rename. Its promise: the destination either does not come into being, or holds a
// complete export with "All Items", "library-mapping.json" and "recovery-report.json".

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>

#include "recovery/export/RecoveryExportResult.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/RestoreSession.hpp"

namespace galdrine::recovery {

// RecoveryExportFaultPoint names the points at which a test makes an export fail on purpose,
// to observe what the export leaves behind. Only a caller's argument triggers one; an export
// without a fault point never stops at any of them.
enum class RecoveryExportFaultPoint : std::uint8_t {
  afterStagingCreated,        // the hidden staging directory exists, nothing is in it
  afterFirstResourceAttempt,  // the first planned resource has been attempted
  beforeMetadata,             // every resource is attempted, no document is written
  beforePublication,          // the staging directory is complete and synchronised
};

// writeExport, in this order: the staging directory beside `destinationPath` (StagingDirectory);
// "All Items" in it; the availability of the plan's payload files examined afresh, since they
// may have changed since the session was built; every planned resource recovered in plan
// order (a resource recovered twice is integrityFailure); "All Items" synchronised; the
// mapping and the report written; the staging directory synchronised; publication. A
// directory that cannot be synchronised is outputWriteFailed. `faultPoint`, when given, makes
// the export fail with outputWriteFailed at that point; afterFirstResourceAttempt never fires
// for a plan without resources.
//
// Any failure before the rename removes the staging directory with all it holds, and leaves
// nothing at the destination. The result counts items and resources as the report does, and
// names the destination as its output.
[[nodiscard]] std::expected<RecoveryExportResult, RecoveryExporterError> writeExport(
    const std::filesystem::path& destinationPath, const RestoreSession& session,
    std::optional<RecoveryExportFaultPoint> faultPoint);

}  // namespace galdrine::recovery
