#pragma once
// ResourcePlan lays out where every resource of an export goes: flat, in one directory "All
// Items", under a name unique in the export. Folders and albums are not reproduced on disk;
// the mapping document carries them.

#include <expected>
#include <string_view>
#include <vector>

#include "recovery/export/ExportModel.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/PlannedResource.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

inline constexpr std::string_view allItemsDirectoryName = "All Items";

// resourcePlan visits the items in model order and each item's resources in the order the item
// lists them, and gives each its preferred file name made collision-safe. A listed resource
// that the model lacks or that belongs to another item, or a resource that no item lists, is
// integrityFailure; so are the name failures of preferredFilename, and names that run out of
// collision suffixes are resourceLimitExceeded. On failure no plan is given.
[[nodiscard]] std::expected<std::vector<PlannedResource>, RecoveryExporterError> resourcePlan(
    const ExportModel& model);

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
