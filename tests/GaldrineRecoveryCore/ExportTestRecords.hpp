#pragma once
// Records for export tests, built from small numbers as the manifest tests build theirs:
// item(3, "a.jpg", {30}) is item 3 named "a.jpg" listing resource 30.

#include <initializer_list>
#include <string_view>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineManifestTestRecords.hpp"

namespace ExportTestRecords {

namespace Records = GaldrineManifestTestRecords;

inline GaldrineBackupMediaItemRecordV1 item(std::uint64_t number, std::string_view originalFilename,
                                           std::initializer_list<std::uint64_t> resources,
                                           GaldrineBackupMediaKindV1 kind = GaldrineBackupMediaKindV1::photo) {
  auto fields = Records::itemFields(number, Records::identifiers(resources));
  fields.originalFilename = originalFilename;
  fields.kind = kind;
  // Only these sources may leave a name empty.
  if (originalFilename.empty()) fields.sourceType = GaldrineBackupMediaSourceTypeV1::privateCamera;
  return Records::made(GaldrineBackupMediaItemRecordV1::make(fields));
}

inline GaldrineBackupMediaResourceRecordV1 resource(
    std::uint64_t number, std::uint64_t item, std::string_view uniformTypeIdentifier = "public.jpeg",
    GaldrineBackupMediaResourceRoleV1 role = GaldrineBackupMediaResourceRoleV1::primary) {
  auto fields = Records::packedResourceFields(number, item, 900, 800, 0);
  fields.originalUTI = uniformTypeIdentifier;
  fields.role = role;
  return Records::made(GaldrineBackupMediaResourceRecordV1::make(fields));
}

}  // namespace ExportTestRecords
