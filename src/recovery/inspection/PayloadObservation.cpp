#include "recovery/inspection/PayloadObservation.hpp"

#include <memory>
#include <utility>

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using Examination = PayloadFileExamination;

}  // namespace

namespace PayloadObservations {

PayloadObservation observation(Examination examination) {
  switch (examination) {
    case Examination::matching:
      return PayloadObservation::matching;
    case Examination::missing:
      return PayloadObservation::missing;
    case Examination::statusUnavailable:
    case Examination::openRefused:
    case Examination::readFailed:
    case Examination::changedWhileRead:
      return PayloadObservation::unreadable;
    case Examination::descriptorStatusFailed:
    case Examination::notRegularFile:
    case Examination::wrongByteCount:
    case Examination::wrongDigest:
      return PayloadObservation::mismatched;
  }
  std::unreachable();
}

std::expected<PayloadFileExaminationMap, Error> examinePayloadFiles(const PayloadExpectationMap& expectations,
                                                                    const format::BackupPackageV1& package,
                                                                    const RecoveryPayloadReadObserver& observer) {
  // One piece buffer for the whole operation, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(PayloadFileExaminations::readPieceByteCount);
  const std::span<std::uint8_t> piece(buffer.get(), PayloadFileExaminations::readPieceByteCount);
  PayloadFileExaminationMap examinations;
  for (const auto& [identifier, expectation] : expectations) {
    const auto path = payloadFilePath(package, identifier, expectation.container);
    if (!path) return std::unexpected(Error::integrityFailure);
    const Examination examination =
        PayloadFileExaminations::examine(*path, expectation.byteCount, expectation.sha256, piece, observer);
    examinations.emplace(identifier, ExaminedPayloadFile{expectation, examination});
  }
  return examinations;
}

PayloadObservationMap observations(const PayloadFileExaminationMap& examinations) {
  PayloadObservationMap observed;
  for (const auto& [identifier, examined] : examinations)
    observed.emplace(identifier, observation(examined.examination));
  return observed;
}

}  // namespace PayloadObservations

RecoveryPayloadFileEvidence payloadFileEvidence(const PayloadExpectationMap& expectations,
                                                const PayloadObservationMap& observations) {
  RecoveryPayloadFileEvidence evidence;
  evidence.requiredFileCount = static_cast<std::int64_t>(expectations.size());
  for (const auto& entry : expectations) {
    const auto observed = observations.find(entry.first);
    const auto observation = observed == observations.end() ? PayloadObservation::unreadable : observed->second;
    switch (observation) {
      case PayloadObservation::matching:
        ++evidence.matchingFileCount;
        continue;
      case PayloadObservation::missing:
        ++evidence.missingFileCount;
        continue;
      case PayloadObservation::mismatched:
        ++evidence.mismatchedFileCount;
        continue;
      case PayloadObservation::unreadable:
        ++evidence.unreadableFileCount;
        continue;
    }
    std::unreachable();
  }
  return evidence;
}

}  // namespace galdrine::recovery
