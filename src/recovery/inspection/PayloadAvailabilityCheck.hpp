#pragma once
// PayloadAvailabilityCheck decides, before an export writes anything of a resource, whether
// each payload file it needs is there as its authenticated part record describes it: every
// artifact of a plan is looked at once and is either matching or failed for a reason. A failed
// artifact only marks the resources that need it; it never ends the export.

#include <filesystem>
#include <optional>
#include <span>
#include <unordered_map>

#include "format/package/BackupPackageV1.hpp"
#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "recovery/inspection/PayloadAvailability.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"
#include "recovery/export/PlannedResource.hpp"
#include "recovery/export/ResourceFailureReason.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

using PayloadAvailabilityMap =
    std::unordered_map<format::BackupIdentifierV1, PayloadAvailability, format::BackupIdentifierHasher>;

// payloadPath is where the package keeps the file of `part`: "objects" and the chunk's file
// name, or "packs" and the segment's. Nothing when the location cannot be formed.
[[nodiscard]] std::optional<std::filesystem::path> payloadPath(const format::BackupPayloadPartRecordV1& part,
                                                              const format::BackupPackageV1& package);

// failureReason is how the export reads an examination: nothing for a matching file; a
// missing file is missingPayload; a wrong length or digest is payloadIntegrityFailure; every
// other finding (no status, no open, no regular file, a failed read, a change while hashing)
// is unreadablePayload.
[[nodiscard]] std::optional<ResourceFailureReason> failureReason(PayloadFileExamination examination);

// payloadFileFailure examines the file of `part` against its artifact's length and digest
// (PayloadFileExaminations::examine tells the steps) and gives its failure reason, or nothing
// for a matching file. A location that cannot be formed is unreadablePayload. `buffer` must
// hold one piece.
[[nodiscard]] std::optional<ResourceFailureReason> payloadFileFailure(const format::BackupPayloadPartRecordV1& part,
                                                                      const format::BackupPackageV1& package,
                                                                      std::span<std::uint8_t> buffer);

// payloadAvailability looks at each artifact of `plan` once, in plan order and part order.
// With `examined`, an artifact examined there against exactly its container, length and
// digest takes that finding over; any other is examined now.
[[nodiscard]] PayloadAvailabilityMap payloadAvailability(std::span<const PlannedResource> plan,
                                                         const format::BackupPackageV1& package,
                                                         const PayloadFileExaminationMap& examined = {});

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
