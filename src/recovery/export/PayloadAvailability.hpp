#pragma once
// PayloadAvailability decides, before an export writes anything of a resource, whether each
// payload file it needs is there as its authenticated part record describes it: every artifact
// of a plan is looked at once and is either matching or failed for a reason. A failed artifact
// only marks the resources that need it; it never ends the export.

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>

#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "recovery/export/ResourceOutcome.hpp"
#include "recovery/export/ResourcePlan.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"

namespace galdrine::recovery {

// PayloadAvailability is what looking at one payload artifact file found: either it matches its
// record, or it failed for a reason.
class PayloadAvailability {
 public:
  [[nodiscard]] static constexpr PayloadAvailability failed(ResourceFailureReason reason) {
    return PayloadAvailability(reason);
  }
  [[nodiscard]] static constexpr PayloadAvailability matching() { return PayloadAvailability(std::nullopt); }

  // of is how the export reads an examination: a matching file is matching; a missing file is
  // missingPayload; a wrong length or digest is payloadIntegrityFailure; every other finding (no
  // status, no open, no regular file, a failed read, a change while hashing) is
  // unreadablePayload.
  [[nodiscard]] static PayloadAvailability of(PayloadFileExamination examination);

  [[nodiscard]] constexpr bool isMatching() const { return !failureReason_.has_value(); }
  // failureReason is the reason of a failed artifact, and nothing for a matching one.
  [[nodiscard]] constexpr std::optional<ResourceFailureReason> failureReason() const { return failureReason_; }

  friend constexpr bool operator==(const PayloadAvailability&, const PayloadAvailability&) = default;

 private:
  explicit constexpr PayloadAvailability(std::optional<ResourceFailureReason> reason) : failureReason_(reason) {}

  std::optional<ResourceFailureReason> failureReason_;
};

using PayloadAvailabilityMap =
    std::unordered_map<format::BackupIdentifierV1, PayloadAvailability, format::BackupIdentifierHasher>;

// payloadFileFailure examines the file of `part` (payloadFilePath) against its artifact's length
// and digest (PayloadFileExaminations::examine tells the steps) and gives its failure reason, or
// nothing for a matching file. A location that cannot be formed is unreadablePayload. `buffer`
// must hold one piece.
[[nodiscard]] std::optional<ResourceFailureReason> payloadFileFailure(const format::BackupPayloadPartRecordV1& part,
                                                                      const format::BackupPackageV1& package,
                                                                      std::span<std::uint8_t> buffer);

// payloadAvailability looks at each artifact of `plan` once, in plan order and part order.
// With `examined`, an artifact examined there against exactly its container, length and
// digest takes that finding over; any other is examined now.
[[nodiscard]] PayloadAvailabilityMap payloadAvailability(std::span<const PlannedResource> plan,
                                                         const format::BackupPackageV1& package,
                                                         const PayloadFileExaminationMap& examined = {});

}  // namespace galdrine::recovery
