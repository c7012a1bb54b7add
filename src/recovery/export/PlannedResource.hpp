#pragma once
// PlannedResource is one resource of an export with the item it belongs to and the path,
// relative to the export's root, at which its file is to stand.
//
// `item` and `resource` point into the ExportModel the plan was made from: that model must
// outlive the plan and stay unchanged. Neither is ever null.

#include <string>

#include "format/manifest/BackupMediaItemRecordV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

struct PlannedResource {
  const format::BackupMediaItemRecordV1* item = nullptr;
  const format::BackupMediaResourceRecordV1* resource = nullptr;
  std::string relativePath;  // "All Items/" and the resource's flat file name
};

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
