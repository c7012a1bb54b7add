#include "GaldrineRecoveryCore/PayloadObservation.hpp"

#include <memory>
#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineRecoveryCore/InspectorErrorTranslation.hpp"

namespace {

namespace fs = std::filesystem;
using Error = GaldrineRecoveryPackageInspectorV1Error;
using Container = GaldrineBackupPayloadContainerKindV1;
using Examination = PayloadFileExamination;

[[nodiscard]] std::expected<fs::path, Error> payloadFileURL(const GaldrineBackupPackageV1& package, const Bytes& identifier,
                                                            Container container) {
  const bool isChunk = container == Container::chunk;
  const auto directory = package.directoryURL(isChunk ? "objects" : "packs");
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  const auto name = isChunk ? GaldrineBackupPayloadV1::resourceChunkFileName(identifier)
                            : GaldrineBackupPayloadV1::packSegmentFileName(identifier);
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
                                      std::span<std::uint8_t> buffer, const GaldrineRecoveryPayloadReadObserverV1& observer) {
  return observation(PayloadFileExaminations::examine(path, expectation.byteCount, expectation.sha256, buffer, observer));
}

std::expected<PayloadFileExaminationMap, Error> examinePayloadFiles(const PayloadExpectationMap& expectations,
                                                                    const GaldrineBackupPackageV1& package,
                                                                    const GaldrineRecoveryPayloadReadObserverV1& observer) {
  // One piece buffer for the whole operation, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(readPieceByteCount);
  const std::span<std::uint8_t> piece(buffer.get(), readPieceByteCount);
  PayloadFileExaminationMap examinations;
  for (const auto& [identifier, expectation] : expectations) {
    const auto url = payloadFileURL(package, identifier, expectation.container);
    if (!url) return std::unexpected(url.error());
    const Examination examination =
        PayloadFileExaminations::examine(*url, expectation.byteCount, expectation.sha256, piece, observer);
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
