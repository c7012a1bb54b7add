#include "recovery/inspection/PayloadObservation.hpp"

#include <memory>
#include <utility>

#include "format/payload/BackupPayloadV1.hpp"
#include "recovery/inspection/InspectorErrorTranslation.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryPackageInspectorError;
using Container = format::BackupPayloadContainerKindV1;
using Examination = PayloadFileExamination;

[[nodiscard]] std::expected<fs::path, Error> payloadFilePath(const format::BackupPackageV1& package, const Bytes& identifier,
                                                            Container container) {
  const bool isChunk = container == Container::chunk;
  const auto directory = package.directoryPath(isChunk ? "objects" : "packs");
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  const auto name = isChunk ? format::BackupPayloadV1::resourceChunkFileName(identifier)
                            : format::BackupPayloadV1::packSegmentFileName(identifier);
  if (!name) return std::unexpected(inspectorError(name.error()));
  return *directory / *name;
}

}  // namespace

namespace PayloadObservations {

PayloadObservation observation(Examination examination) {
  switch (examination) {
    case Examination::matching: return PayloadObservation::matching;
    case Examination::missing: return PayloadObservation::missing;
    case Examination::statusUnavailable:
    case Examination::openRefused:
    case Examination::readFailed:
    case Examination::changedWhileRead: return PayloadObservation::unreadable;
    case Examination::descriptorStatusFailed:
    case Examination::notRegularFile:
    case Examination::wrongByteCount:
    case Examination::wrongDigest: return PayloadObservation::mismatched;
  }
  std::unreachable();
}

PayloadObservation observePayloadFile(const fs::path& path, const PayloadExpectation& expectation,
                                      std::span<std::uint8_t> buffer, const RecoveryPayloadReadObserver& observer) {
  return observation(PayloadFileExaminations::examine(path, expectation.byteCount, expectation.sha256, buffer, observer));
}

std::expected<PayloadFileExaminationMap, Error> examinePayloadFiles(const PayloadExpectationMap& expectations,
                                                                    const format::BackupPackageV1& package,
                                                                    const RecoveryPayloadReadObserver& observer) {
  // One piece buffer for the whole operation, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(readPieceByteCount);
  const std::span<std::uint8_t> piece(buffer.get(), readPieceByteCount);
  PayloadFileExaminationMap examinations;
  for (const auto& [identifier, expectation] : expectations) {
    const auto path = payloadFilePath(package, identifier, expectation.container);
    if (!path) return std::unexpected(path.error());
    const Examination examination =
        PayloadFileExaminations::examine(*path, expectation.byteCount, expectation.sha256, piece, observer);
    examinations.emplace(identifier, ExaminedPayloadFile{expectation, examination});
  }
  return examinations;
}

PayloadObservationMap observations(const PayloadFileExaminationMap& examinations) {
  PayloadObservationMap observed;
  for (const auto& [identifier, examined] : examinations) observed.emplace(identifier, observation(examined.examination));
  return observed;
}

}  // namespace PayloadObservations

}  // namespace galdrine::recovery
