#pragma once
// BackupPayloadV1Error is why a pack segment or a resource chunk could not be written,
// inspected or opened. Cases stand in the order of the payload contract; only injectedFault
// carries a payload, the fault point at which a hook stopped the write. Damaged and tampered
// files read alike: no path, offset or lower reason travels with a case.

#include <cstdint>
#include <optional>

#include "format/payload/BackupPayloadFaultPoint.hpp"

namespace galdrine::format {

struct BackupPayloadV1Error {
  enum class Code : std::uint8_t {
    injectedFault,  // payload: the fault point
    invalidIdentifier,
    invalidKey,
    invalidEntrySet,
    plaintextLimitExceeded,
    segmentLimitExceeded,
    invalidArtifactName,
    invalidParentDirectory,
    destinationAlreadyExists,
    invalidArtifact,
    unsupportedContainer,
    malformedIndex,
    verificationFailed,
    entryNotFound,
  };

  Code code;
  std::optional<BackupPayloadFaultPoint> faultPoint = std::nullopt;  // only for injectedFault

  static constexpr BackupPayloadV1Error injectedFault(BackupPayloadFaultPoint point) {
    return {Code::injectedFault, point};
  }
  static constexpr BackupPayloadV1Error invalidIdentifier() { return {Code::invalidIdentifier}; }
  static constexpr BackupPayloadV1Error invalidKey() { return {Code::invalidKey}; }
  static constexpr BackupPayloadV1Error invalidEntrySet() { return {Code::invalidEntrySet}; }
  static constexpr BackupPayloadV1Error plaintextLimitExceeded() { return {Code::plaintextLimitExceeded}; }
  static constexpr BackupPayloadV1Error segmentLimitExceeded() { return {Code::segmentLimitExceeded}; }
  static constexpr BackupPayloadV1Error invalidArtifactName() { return {Code::invalidArtifactName}; }
  static constexpr BackupPayloadV1Error invalidParentDirectory() { return {Code::invalidParentDirectory}; }
  static constexpr BackupPayloadV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists}; }
  static constexpr BackupPayloadV1Error invalidArtifact() { return {Code::invalidArtifact}; }
  static constexpr BackupPayloadV1Error unsupportedContainer() { return {Code::unsupportedContainer}; }
  static constexpr BackupPayloadV1Error malformedIndex() { return {Code::malformedIndex}; }
  static constexpr BackupPayloadV1Error verificationFailed() { return {Code::verificationFailed}; }
  static constexpr BackupPayloadV1Error entryNotFound() { return {Code::entryNotFound}; }

  friend constexpr bool operator==(const BackupPayloadV1Error&, const BackupPayloadV1Error&) = default;
};

}  // namespace galdrine::format
