#include "recovery/inspection/PayloadAvailabilityCheck.hpp"

#include <memory>
#include <utility>

#include "format/payload/BackupPayloadV1.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

namespace {

using Examination = PayloadFileExamination;
using Container = format::BackupPayloadContainerKindV1;
using Part = format::BackupPayloadPartRecordV1;

[[nodiscard]] PayloadAvailability availabilityOf(std::optional<ResourceFailureReason> reason) {
  return reason ? PayloadAvailability::failed(*reason) : PayloadAvailability::matching();
}

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

std::optional<std::filesystem::path> payloadPath(const Part& part, const format::BackupPackageV1& package) {
  const bool isChunk = part.container() == Container::chunk;
  const auto directory = package.directoryPath(isChunk ? "objects" : "packs");
  if (!directory) return std::nullopt;
  const auto name = isChunk ? format::BackupPayloadV1::resourceChunkFileName(part.artifactIdentifier())
                            : format::BackupPayloadV1::packSegmentFileName(part.artifactIdentifier());
  if (!name) return std::nullopt;
  return *directory / *name;
}

std::optional<ResourceFailureReason> failureReason(Examination examination) {
  switch (examination) {
    case Examination::matching: return std::nullopt;
    case Examination::missing: return ResourceFailureReason::missingPayload;
    case Examination::wrongByteCount:
    case Examination::wrongDigest: return ResourceFailureReason::payloadIntegrityFailure;
    case Examination::statusUnavailable:
    case Examination::openRefused:
    case Examination::descriptorStatusFailed:
    case Examination::notRegularFile:
    case Examination::readFailed:
    case Examination::changedWhileRead: return ResourceFailureReason::unreadablePayload;
  }
  std::unreachable();
}

std::optional<ResourceFailureReason> payloadFileFailure(const Part& part, const format::BackupPackageV1& package,
                                                        std::span<std::uint8_t> buffer) {
  const auto path = payloadPath(part, package);
  if (!path) return ResourceFailureReason::unreadablePayload;
  return failureReason(
      PayloadFileExaminations::examine(*path, part.artifactFileByteCount(), part.artifactFileSHA256(), buffer));
}

PayloadAvailabilityMap payloadAvailability(std::span<const PlannedResource> plan, const format::BackupPackageV1& package,
                                           const PayloadFileExaminationMap& examined) {
  // One piece buffer for all files, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(PayloadFileExaminations::readPieceByteCount);
  const std::span<std::uint8_t> piece(buffer.get(), PayloadFileExaminations::readPieceByteCount);
  PayloadAvailabilityMap availability;
  for (const PlannedResource& planned : plan) {
    for (const Part& part : planned.resource->parts()) {
      if (availability.contains(part.artifactIdentifier())) continue;
      const auto earlier = examinedBefore(part, examined);
      const auto reason = earlier ? failureReason(*earlier) : payloadFileFailure(part, package, piece);
      availability.emplace(part.artifactIdentifier(), availabilityOf(reason));
    }
  }
  return availability;
}

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
