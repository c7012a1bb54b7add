#pragma once
// ResourcePlan lays out where every resource of an export goes: flat, in one directory "All
// Items", under a name unique in the export. Folders and albums are not reproduced on disk;
// the mapping document carries them.

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "format/manifest/BackupMediaItemRecordV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "recovery/export/ExportModel.hpp"
#include "recovery/export/RecoveryExporterError.hpp"

namespace galdrine::recovery {

inline constexpr std::string_view allItemsDirectoryName = "All Items";

// PlannedResource is one resource of an export with the item it belongs to and the path,
// relative to the export's root, at which its file is to stand.
//
// `item` and `resource` point into the ExportModel the plan was made from: that model must
// outlive the plan and stay unchanged. Neither is ever null.
struct PlannedResource {
  const format::BackupMediaItemRecordV1* item = nullptr;
  const format::BackupMediaResourceRecordV1* resource = nullptr;
  std::string relativePath;  // "All Items/" and the resource's flat file name
};

// resourcePlan visits the items in model order and each item's resources in the order the item
// lists them, and gives each its preferred file name made collision-safe. A listed resource
// that the model lacks or that belongs to another item, or a resource that no item lists, is
// integrityFailure; so are the name failures of preferredFilename, and names that run out of
// collision suffixes are resourceLimitExceeded. On failure no plan is given.
[[nodiscard]] std::expected<std::vector<PlannedResource>, RecoveryExporterError> resourcePlan(const ExportModel& model);

}  // namespace galdrine::recovery
