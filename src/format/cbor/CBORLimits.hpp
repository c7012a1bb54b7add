#pragma once
// CBORLimits bounds one encode or decode: every caller of the codec names one.

#include <algorithm>
#include <cstdint>

namespace galdrine::format {

struct CBORLimits {
  std::int64_t maximumEncodedByteCount;     // the whole encoded value
  std::int64_t maximumByteStringByteCount;  // one byte string
  std::int64_t maximumTextStringByteCount;  // one text string, in UTF-8 bytes
  std::int64_t maximumContainerItemCount;   // elements of an array, or pairs of a map
  std::int64_t maximumTotalItemCount;       // every item, map keys and values counted apart
  std::int64_t maximumDepth;                // the root item has depth 0

  // isValid: the encoded and total bounds are at least 1, the other four at least 0.
  [[nodiscard]] constexpr bool isValid() const {
    return maximumEncodedByteCount >= 1 && maximumTotalItemCount >= 1 && maximumByteStringByteCount >= 0 &&
           maximumTextStringByteCount >= 0 && maximumContainerItemCount >= 0 && maximumDepth >= 0;
  }

  static constexpr CBORLimits formatHeader() { return {4096, 64, 256, 32, 128, 4}; }
  static constexpr CBORLimits authenticatedData() { return {4096, 64, 256, 16, 32, 2}; }

  // sealedFrame clamps the ciphertext bound into 16 ... 16 MiB and allows 1 KiB of structure.
  static constexpr CBORLimits sealedFrame(std::int64_t maximumCiphertextByteCount) {
    const std::int64_t clamped = std::clamp<std::int64_t>(maximumCiphertextByteCount, 16, 16777216);
    return {clamped + 1024, clamped, 256, 8, 16, 2};
  }

  friend constexpr bool operator==(const CBORLimits&, const CBORLimits&) = default;
};

}  // namespace galdrine::format
