#pragma once
// PayloadAvailabilityCheck decides, before an export writes anything of a resource, whether
// each payload file it needs is there as its authenticated part record describes it: every
// artifact of a plan is looked at once and is either matching or failed for a reason. A failed
// artifact only marks the resources that need it; it never ends the export.

#include <filesystem>
#include <optional>
#include <span>
#include <unordered_map>

#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadPartRecordV1.hpp"
#include "GaldrineRecoveryCore/PayloadAvailability.hpp"
#include "GaldrineRecoveryCore/PayloadFileExamination.hpp"
#include "GaldrineRecoveryCore/PlannedResource.hpp"
#include "GaldrineRecoveryCore/ResourceFailureReason.hpp"

namespace GaldrineRecoveryExporterV1 {

using PayloadAvailabilityMap =
    std::unordered_map<GaldrineBackupIdentifierV1, PayloadAvailability, GaldrineBackupIdentifierHasherV1>;

// payloadURL is where the package keeps the file of `part`: "objects" and the chunk's file
// name, or "packs" and the segment's. Nothing when the location cannot be formed.
[[nodiscard]] std::optional<std::filesystem::path> payloadURL(const GaldrineBackupPayloadPartRecordV1& part,
                                                              const GaldrineBackupPackageV1& package);

// failureReason is how the export reads an examination: nothing for a matching file; a
// missing file is missingPayload; a wrong length or digest is payloadIntegrityFailure; every
// other finding (no status, no open, no regular file, a failed read, a change while hashing)
// is unreadablePayload.
[[nodiscard]] std::optional<ResourceFailureReason> failureReason(PayloadFileExamination examination);

// payloadFileFailure examines the file of `part` against its artifact's length and digest
// (PayloadFileExaminations::examine tells the steps) and gives its failure reason, or nothing
// for a matching file. A location that cannot be formed is unreadablePayload. `buffer` must
// hold one piece.
[[nodiscard]] std::optional<ResourceFailureReason> payloadFileFailure(const GaldrineBackupPayloadPartRecordV1& part,
                                                                      const GaldrineBackupPackageV1& package,
                                                                      std::span<std::uint8_t> buffer);

// payloadAvailability looks at each artifact of `plan` once, in plan order and part order.
// With `examined`, an artifact examined there against exactly its container, length and
// digest takes that finding over; any other is examined now.
[[nodiscard]] PayloadAvailabilityMap payloadAvailability(std::span<const PlannedResource> plan,
                                                         const GaldrineBackupPackageV1& package,
                                                         const PayloadFileExaminationMap& examined = {});

}  // namespace GaldrineRecoveryExporterV1
