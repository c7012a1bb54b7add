#pragma once
// RecoveryKeyMnemonicV1Error: why words and entropy did not convert. Cases stand in
// contract order; payloads are zero where a case has none.

#include <cstdint>

namespace galdrine::keys {

struct RecoveryKeyMnemonicV1Error {
  enum class Code : std::uint8_t {
    invalidEntropyByteCount,  // expected, actual
    invalidWordCount,         // expected, actual
    unknownWord,              // position, counted from 1
    invalidWordList,
    checksumMismatch,
  };

  Code code;
  std::int64_t expected = 0;
  std::int64_t actual = 0;
  std::int64_t position = 0;

  static constexpr RecoveryKeyMnemonicV1Error invalidEntropyByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidEntropyByteCount, expected, actual};
  }
  static constexpr RecoveryKeyMnemonicV1Error invalidWordCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidWordCount, expected, actual};
  }
  static constexpr RecoveryKeyMnemonicV1Error unknownWord(std::int64_t position) {
    return {Code::unknownWord, 0, 0, position};
  }
  static constexpr RecoveryKeyMnemonicV1Error invalidWordList() { return {Code::invalidWordList}; }
  static constexpr RecoveryKeyMnemonicV1Error checksumMismatch() { return {Code::checksumMismatch}; }

  friend constexpr bool operator==(const RecoveryKeyMnemonicV1Error&,
                                   const RecoveryKeyMnemonicV1Error&) = default;
};

}  // namespace galdrine::keys
