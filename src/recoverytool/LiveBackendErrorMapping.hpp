#pragma once
// LiveBackendErrorMapping is the live backend's one table from the engine's failures to what
// the user sees. No error's own detail travels further than this table. A failure the table
// does not know counts as an integrity failure, so an unknown fault never looks like a mere
// mistake of the user; the inspection knows packageUnavailable, the export has no such case.

#include "keys/RecoveryKeyMnemonicV1Error.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"
#include "recoverytool/RecoveryToolBackendError.hpp"
#include "recoverytool/RecoveryToolError.hpp"

namespace galdrine::recoverytool {

namespace LiveBackendErrorMapping {

// mapInspectionError: an error of the recovery key words, and the backend's own
// invalidCredential, are invalidCredential; each inspector case keeps its name.
[[nodiscard]] RecoveryToolError mapInspectionError(const keys::RecoveryKeyMnemonicV1Error& error);
[[nodiscard]] RecoveryToolError mapInspectionError(recovery::RecoveryPackageInspectorError error);
[[nodiscard]] RecoveryToolError mapInspectionError(RecoveryToolBackendError error);

// mapExportError: each exporter case keeps its name, snapshotNotFound being the user's
// snapshotSelectionNotFound.
[[nodiscard]] RecoveryToolError mapExportError(recovery::RecoveryExporterError error);

}  // namespace LiveBackendErrorMapping

}  // namespace galdrine::recoverytool
