#pragma once
// Records for export tests, built from small numbers as the manifest tests build theirs:
// item(3, "a.jpg", {30}) is item 3 named "a.jpg" listing resource 30, and identifier(3) its
// identifier.

#include <initializer_list>
#include <string_view>
#include <vector>

#include "support/ManifestTestRecords.hpp"

namespace galdrine::recovery {

namespace ExportTestRecords {

namespace Records = testsupport::ManifestTestRecords;

inline format::BackupIdentifierV1 identifier(std::uint64_t number) {
  return *format::FixedBytes::identifier(Records::identifier(number));
}
inline platform::SHA256Digest digest(std::uint64_t number) {
  return *format::FixedBytes::digest(Records::digest(number));
}

inline format::BackupMediaItemRecordV1 item(std::uint64_t number, std::string_view originalFilename,
                                            std::initializer_list<std::uint64_t> resources,
                                            format::BackupMediaKindV1 kind = format::BackupMediaKindV1::photo) {
  auto fields = Records::itemFields(number, Records::identifiers(resources));
  fields.originalFilename = originalFilename;
  fields.kind = kind;
  // Only these sources may leave a name empty.
  if (originalFilename.empty()) fields.sourceType = format::BackupMediaSourceTypeV1::privateCamera;
  return Records::made(format::BackupMediaItemRecordV1::make(fields));
}

inline format::BackupMediaResourceRecordV1 resource(
    std::uint64_t number, std::uint64_t item, std::string_view uniformTypeIdentifier = "public.jpeg",
    format::BackupMediaResourceRoleV1 role = format::BackupMediaResourceRoleV1::primary) {
  auto fields = Records::packedResourceFields(number, item, 900, 800, 0);
  fields.originalUTI = uniformTypeIdentifier;
  fields.role = role;
  return Records::made(format::BackupMediaResourceRecordV1::make(fields));
}

}  // namespace ExportTestRecords

}  // namespace galdrine::recovery
