#pragma once
// PlannedResource is one resource of an export with the item it belongs to and the path,
// relative to the export's root, at which its file is to stand.
//
// `item` and `resource` point into the ExportModel the plan was made from: that model must
// outlive the plan and stay unchanged. Neither is ever null.

#include <string>

#include "GaldrineCryptoPrimitives/GaldrineBackupMediaItemRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaResourceRecordV1.hpp"

namespace GaldrineRecoveryExporterV1 {

struct PlannedResource {
  const GaldrineBackupMediaItemRecordV1* item = nullptr;
  const GaldrineBackupMediaResourceRecordV1* resource = nullptr;
  std::string relativePath;  // "All Items/" and the resource's flat file name
};

}  // namespace GaldrineRecoveryExporterV1
