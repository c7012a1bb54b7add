#pragma once
// GaldrineBackupPayloadV1Error is why a pack segment or a resource chunk could not be written,
// inspected or opened. Cases stand in the order of the payload contract; only injectedFault
// carries a payload, the fault point at which a hook stopped the write. Damaged and tampered
// files read alike: no path, offset or lower reason travels with a case.

#include <cstdint>
#include <optional>

#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadFaultPointV1.hpp"

struct GaldrineBackupPayloadV1Error {
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
  std::optional<GaldrineBackupPayloadFaultPointV1> faultPoint = std::nullopt;  // only for injectedFault

  static constexpr GaldrineBackupPayloadV1Error injectedFault(GaldrineBackupPayloadFaultPointV1 point) {
    return {Code::injectedFault, point};
  }
  static constexpr GaldrineBackupPayloadV1Error invalidIdentifier() { return {Code::invalidIdentifier}; }
  static constexpr GaldrineBackupPayloadV1Error invalidKey() { return {Code::invalidKey}; }
  static constexpr GaldrineBackupPayloadV1Error invalidEntrySet() { return {Code::invalidEntrySet}; }
  static constexpr GaldrineBackupPayloadV1Error plaintextLimitExceeded() { return {Code::plaintextLimitExceeded}; }
  static constexpr GaldrineBackupPayloadV1Error segmentLimitExceeded() { return {Code::segmentLimitExceeded}; }
  static constexpr GaldrineBackupPayloadV1Error invalidArtifactName() { return {Code::invalidArtifactName}; }
  static constexpr GaldrineBackupPayloadV1Error invalidParentDirectory() { return {Code::invalidParentDirectory}; }
  static constexpr GaldrineBackupPayloadV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists}; }
  static constexpr GaldrineBackupPayloadV1Error invalidArtifact() { return {Code::invalidArtifact}; }
  static constexpr GaldrineBackupPayloadV1Error unsupportedContainer() { return {Code::unsupportedContainer}; }
  static constexpr GaldrineBackupPayloadV1Error malformedIndex() { return {Code::malformedIndex}; }
  static constexpr GaldrineBackupPayloadV1Error verificationFailed() { return {Code::verificationFailed}; }
  static constexpr GaldrineBackupPayloadV1Error entryNotFound() { return {Code::entryNotFound}; }

  friend constexpr bool operator==(const GaldrineBackupPayloadV1Error&, const GaldrineBackupPayloadV1Error&) = default;
};
