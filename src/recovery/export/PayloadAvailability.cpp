#include "recovery/export/PayloadAvailability.hpp"

#include <memory>
#include <utility>

namespace galdrine::recovery {

namespace {

using Examination = PayloadFileExamination;
using Part = format::BackupPayloadPartRecordV1;

// examinedBefore gives the earlier finding on `part`'s artifact when it was made against the
// very length, digest and container the part names.
[[nodiscard]] std::optional<Examination> examinedBefore(const Part& part, const PayloadFileExaminationMap& examined) {
  const auto found = examined.find(Bytes(part.artifactIdentifier().begin(), part.artifactIdentifier().end()));
  if (found == examined.end()) return std::nullopt;
  const PayloadExpectation& expectation = found->second.expectation;
  if (expectation.container != part.container() || expectation.byteCount != part.artifactFileByteCount() ||
      !ByteOrder::equal(expectation.sha256, part.artifactFileSHA256())) {
    return std::nullopt;
  }
  return found->second.examination;
}

}  // namespace

PayloadAvailability PayloadAvailability::of(Examination examination) {
  switch (examination) {
    case Examination::matching:
      return matching();
    case Examination::missing:
      return failed(ResourceFailureReason::missingPayload);
    case Examination::wrongByteCount:
    case Examination::wrongDigest:
      return failed(ResourceFailureReason::payloadIntegrityFailure);
    case Examination::statusUnavailable:
    case Examination::openRefused:
    case Examination::descriptorStatusFailed:
    case Examination::notRegularFile:
    case Examination::readFailed:
    case Examination::changedWhileRead:
      return failed(ResourceFailureReason::unreadablePayload);
  }
  std::unreachable();
}

std::optional<ResourceFailureReason> payloadFileFailure(const Part& part, const format::BackupPackageV1& package,
                                                        std::span<std::uint8_t> buffer) {
  const auto path = payloadFilePath(package, part.artifactIdentifier(), part.container());
  if (!path) return ResourceFailureReason::unreadablePayload;
  return PayloadAvailability::of(
             PayloadFileExaminations::examine(*path, part.artifactFileByteCount(), part.artifactFileSHA256(), buffer))
      .failureReason();
}

PayloadAvailabilityMap payloadAvailability(std::span<const PlannedResource> plan,
                                           const format::BackupPackageV1& package,
                                           const PayloadFileExaminationMap& examined) {
  // One piece buffer for all files, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(PayloadFileExaminations::readPieceByteCount);
  const std::span<std::uint8_t> piece(buffer.get(), PayloadFileExaminations::readPieceByteCount);
  PayloadAvailabilityMap availability;
  for (const PlannedResource& planned : plan) {
    for (const Part& part : planned.resource->parts()) {
      if (availability.contains(part.artifactIdentifier())) continue;
      const auto earlier = examinedBefore(part, examined);
      if (earlier) {
        availability.emplace(part.artifactIdentifier(), PayloadAvailability::of(*earlier));
        continue;
      }
      const auto reason = payloadFileFailure(part, package, piece);
      availability.emplace(part.artifactIdentifier(),
                           reason ? PayloadAvailability::failed(*reason) : PayloadAvailability::matching());
    }
  }
  return availability;
}

}  // namespace galdrine::recovery
