#pragma once
// ExportMapping builds the two documents of an export from its model, its plan and the outcome
// of each planned resource. Identifiers are never derived anew: what the documents say is what
// the records say, apart from the planned paths and the status fields.

#include <cstdint>
#include <expected>
#include <span>

#include "format/graph/BackupIdentifierV1.hpp"
#include "recovery/export/ExportModel.hpp"
#include "recovery/export/MappingV1.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/ReportV1.hpp"
#include "recovery/export/ResourceOutcome.hpp"
#include "recovery/export/ResourcePlan.hpp"

namespace galdrine::recovery {

// ExportSelection is what the documents say of the snapshot that was exported: the selected
// commit, its snapshot, and the snapshot's creation time, all from authenticated records.
struct ExportSelection {
  format::BackupIdentifierV1 commitIdentifier{};
  format::BackupIdentifierV1 snapshotIdentifier{};
  std::int64_t snapshotCreatedAtUTCMilliseconds = 0;
};

// mappingDocument converts the model's folders, albums, memberships and tombstones field by field, and
// gives each item its resources in the order the item lists them, each with its planned path
// and its outcome, and the item's status. A listed resource without a planned resource or
// without an outcome is integrityFailure, and no document is given.
[[nodiscard]] std::expected<MappingV1, RecoveryExporterError> mappingDocument(const ExportSelection& selected,
                                                                              const ExportModel& model,
                                                                              std::span<const PlannedResource> plan,
                                                                              const ResourceOutcomes& outcomes);

// reportDocument counts the items and resources recovered and lists one failure row for each issue,
// in plan order and, within a resource, in the order of its issues. The status is "completed"
// exactly when there is no failure row. A planned resource or listed resource without an
// outcome is integrityFailure.
[[nodiscard]] std::expected<ReportV1, RecoveryExporterError> reportDocument(const ExportSelection& selected,
                                                                            const ExportModel& model,
                                                                            std::span<const PlannedResource> plan,
                                                                            const ResourceOutcomes& outcomes);

}  // namespace galdrine::recovery
