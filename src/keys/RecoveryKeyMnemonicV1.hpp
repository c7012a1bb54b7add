#pragma once
// RecoveryKeyMnemonicV1 writes the 32-byte recovery key as 24 words of the BIP-39
// English list, with the BIP-39 checksum, and reads typed words back into the same 32 bytes.
// The words only transcribe the entropy: no seed function is applied, the entropy is the key.
//
// Every operation that needs the word list loads and checks it anew (no cache); a damaged list
// is invalidWordList. The plain operations use the list compiled into the program; the
// overloads with `wordList` check and use the bytes given instead, so that a damaged list can
// be presented.
//
// Typed words are normalised before anything looks at them: compatibility decomposition
// (NFKD), lower case, then a split on every whitespace scalar, so case, full-width letters and
// any leading, trailing or repeated blanks, tabs and line breaks don't matter. Text that is not
// valid UTF-8, or too long for the text services, holds no readable word and is
// invalidWordCount(24, 0).
//
// Phrases and entropy are secrets: the caller owns and wipes what it receives. Everything this
// code draws or derives on the way (drawn entropy, normalised text, the checksum, decoded
// bytes) is wiped before it returns, on every path.

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <variant>

#include "keys/KeyHandle.hpp"
#include "keys/KeyMaterialError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::keys {

// RecoveryKeyMnemonicV1Error: why words and entropy did not convert. Cases stand in contract
// order; payloads are zero where a case has none.
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

  friend constexpr bool operator==(const RecoveryKeyMnemonicV1Error&, const RecoveryKeyMnemonicV1Error&) = default;
};

// The failure of operations that also draw random bytes or make a key storage.
using RecoveryKeyMnemonicV1Failure = std::variant<RecoveryKeyMnemonicV1Error, KeyMaterialError>;

namespace RecoveryKeyMnemonicV1 {

inline constexpr std::string_view formatIdentifier = "com.galdrine.recovery-key-mnemonic.en.v1";
inline constexpr std::int64_t wordCount = 24;
inline constexpr std::int64_t entropyByteCount = 32;
inline constexpr std::int64_t vocabularyWordCount = 2048;
inline constexpr std::string_view vocabularySHA256 = "2f5eed53a4727b4bf8880d8f3f199efc90e58503646d9ff8eff3a2ed3b24dbda";

// generatePhrase draws 32 bytes from the system's secure random source and gives their phrase.
// A failing source is KeyMaterialError::randomGenerationFailed(status).
[[nodiscard]] std::expected<std::string, RecoveryKeyMnemonicV1Failure> generatePhrase();
[[nodiscard]] std::expected<std::string, RecoveryKeyMnemonicV1Failure> generatePhrase(ByteView wordList);

// phrase gives the 24 words of 32 entropy bytes, joined by single spaces. Another length is
// invalidEntropyByteCount(32, length), before the list is loaded.
[[nodiscard]] std::expected<std::string, RecoveryKeyMnemonicV1Error> phrase(ByteView entropy);
[[nodiscard]] std::expected<std::string, RecoveryKeyMnemonicV1Error> phrase(ByteView entropy, ByteView wordList);

// entropy reads typed words back into 32 bytes, checking in this order: the word count
// (invalidWordCount(24, count), before the list is loaded), the list, each word in order (the
// first one off the list is unknownWord with its position from 1), and the checksum.
[[nodiscard]] std::expected<Bytes, RecoveryKeyMnemonicV1Error> entropy(std::string_view phrase);
[[nodiscard]] std::expected<Bytes, RecoveryKeyMnemonicV1Error> entropy(std::string_view phrase, ByteView wordList);

// recoveryKey is entropy() delivered in a key storage; the entropy is wiped whether or not the
// storage could be made.
[[nodiscard]] std::expected<RecoveryKeyHandle, RecoveryKeyMnemonicV1Failure> recoveryKey(std::string_view phrase);
[[nodiscard]] std::expected<RecoveryKeyHandle, RecoveryKeyMnemonicV1Failure> recoveryKey(std::string_view phrase,
                                                                                         ByteView wordList);

}  // namespace RecoveryKeyMnemonicV1

}  // namespace galdrine::keys
