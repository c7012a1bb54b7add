#pragma once
// AESGCMFrameV1Error is why a frame could not be sealed or opened. Cases stand in the
// order of the frame's contract; only invalidFrameFieldType carries a payload, the key.

#include <cstdint>

namespace galdrine::format {

struct AESGCMFrameV1Error {
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

  static constexpr AESGCMFrameV1Error invalidFrameFieldType(std::uint64_t key) { return {Code::invalidFrameFieldType, key}; }
  static constexpr AESGCMFrameV1Error invalidKeyByteCount() { return {Code::invalidKeyByteCount}; }
  static constexpr AESGCMFrameV1Error invalidNonceByteCount() { return {Code::invalidNonceByteCount}; }
  static constexpr AESGCMFrameV1Error emptyAuthenticatedData() { return {Code::emptyAuthenticatedData}; }
  static constexpr AESGCMFrameV1Error invalidPlaintextLimit() { return {Code::invalidPlaintextLimit}; }
  static constexpr AESGCMFrameV1Error plaintextLimitExceeded() { return {Code::plaintextLimitExceeded}; }
  static constexpr AESGCMFrameV1Error malformedFrame() { return {Code::malformedFrame}; }
  static constexpr AESGCMFrameV1Error invalidFrameFieldSet() { return {Code::invalidFrameFieldSet}; }
  static constexpr AESGCMFrameV1Error unsupportedFrameSchema() { return {Code::unsupportedFrameSchema}; }
  static constexpr AESGCMFrameV1Error unsupportedAlgorithm() { return {Code::unsupportedAlgorithm}; }
  static constexpr AESGCMFrameV1Error plaintextLengthMismatch() { return {Code::plaintextLengthMismatch}; }
  static constexpr AESGCMFrameV1Error authenticationFailed() { return {Code::authenticationFailed}; }

  friend constexpr bool operator==(const AESGCMFrameV1Error&, const AESGCMFrameV1Error&) = default;
};

}  // namespace galdrine::format
