#pragma once
// GaldrineAESGCMFrameV1Error is why a frame could not be sealed or opened. Cases stand in the
// order of the frame's contract; only invalidFrameFieldType carries a payload, the key.

#include <cstdint>

struct GaldrineAESGCMFrameV1Error {
  enum class Code : std::uint8_t {
    invalidFrameFieldType,  // payload: the field's key
    invalidKeyByteCount,
    invalidNonceByteCount,
    emptyAuthenticatedData,
    invalidPlaintextLimit,
    plaintextLimitExceeded,
    malformedFrame,
    invalidFrameFieldSet,
    unsupportedFrameSchema,
    unsupportedAlgorithm,
    plaintextLengthMismatch,
    authenticationFailed,
  };

  Code code;
  std::uint64_t payload = 0;  // zero for the cases without one

  static constexpr GaldrineAESGCMFrameV1Error invalidFrameFieldType(std::uint64_t key) { return {Code::invalidFrameFieldType, key}; }
  static constexpr GaldrineAESGCMFrameV1Error invalidKeyByteCount() { return {Code::invalidKeyByteCount}; }
  static constexpr GaldrineAESGCMFrameV1Error invalidNonceByteCount() { return {Code::invalidNonceByteCount}; }
  static constexpr GaldrineAESGCMFrameV1Error emptyAuthenticatedData() { return {Code::emptyAuthenticatedData}; }
  static constexpr GaldrineAESGCMFrameV1Error invalidPlaintextLimit() { return {Code::invalidPlaintextLimit}; }
  static constexpr GaldrineAESGCMFrameV1Error plaintextLimitExceeded() { return {Code::plaintextLimitExceeded}; }
  static constexpr GaldrineAESGCMFrameV1Error malformedFrame() { return {Code::malformedFrame}; }
  static constexpr GaldrineAESGCMFrameV1Error invalidFrameFieldSet() { return {Code::invalidFrameFieldSet}; }
  static constexpr GaldrineAESGCMFrameV1Error unsupportedFrameSchema() { return {Code::unsupportedFrameSchema}; }
  static constexpr GaldrineAESGCMFrameV1Error unsupportedAlgorithm() { return {Code::unsupportedAlgorithm}; }
  static constexpr GaldrineAESGCMFrameV1Error plaintextLengthMismatch() { return {Code::plaintextLengthMismatch}; }
  static constexpr GaldrineAESGCMFrameV1Error authenticationFailed() { return {Code::authenticationFailed}; }

  friend constexpr bool operator==(const GaldrineAESGCMFrameV1Error&, const GaldrineAESGCMFrameV1Error&) = default;
};
