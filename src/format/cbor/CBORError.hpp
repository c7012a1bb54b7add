#pragma once
// CBORError is the one failure of the deterministic CBOR codec. Cases stand in the
// order of the codec's contract; the first three carry a payload. It has a header of its own
// because the records that encode through the codec (format header, authenticated data,
// sealed frame, pack index) and the package name it in their own results and pass it on
// unchanged, without needing the codec itself.

#include <cstdint>

namespace galdrine::format {

struct CBORError {
  enum class Code : std::uint8_t {
    unsupportedMajorType,    // payload: the major type
    unsupportedSimpleValue,  // payload: the additional value
    duplicateMapKey,         // payload: the repeated key
    invalidLimits,
    encodedByteLimitExceeded,
    byteStringLimitExceeded,
    textStringLimitExceeded,
    containerItemLimitExceeded,
    totalItemLimitExceeded,
    depthLimitExceeded,
    unexpectedEnd,
    trailingBytes,
    nonMinimalIntegerOrLength,
    indefiniteLengthNotAllowed,
    mapKeyMustBeUnsignedInteger,
    mapKeysOutOfOrder,
    invalidUTF8,
    integerOverflow,
  };

  Code code;
  std::uint64_t payload = 0;  // zero for the cases without one

  static constexpr CBORError unsupportedMajorType(std::uint8_t majorType) {
    return {Code::unsupportedMajorType, majorType};
  }
  static constexpr CBORError unsupportedSimpleValue(std::uint8_t additional) {
    return {Code::unsupportedSimpleValue, additional};
  }
  static constexpr CBORError duplicateMapKey(std::uint64_t key) { return {Code::duplicateMapKey, key}; }

  friend constexpr bool operator==(const CBORError&, const CBORError&) = default;
};

}  // namespace galdrine::format
