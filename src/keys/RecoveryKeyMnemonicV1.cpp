#include "keys/RecoveryKeyMnemonicV1.hpp"

#include <array>
#include <cstdint>
#include <vector>

#include "keys/RecoveryKeyVocabulary.hpp"
#include "platform/Random.hpp"
#include "platform/SHA256.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/UnicodeScalars.hpp"
#include "platform/UnicodeText.hpp"

namespace galdrine::keys {

namespace {

using Error = RecoveryKeyMnemonicV1Error;

constexpr std::size_t entropyByteCount = RecoveryKeyMnemonicV1::entropyByteCount;
constexpr std::size_t wordCount = RecoveryKeyMnemonicV1::wordCount;
constexpr std::size_t bitsPerWord = 11;

static_assert(RecoveryKeyMnemonicV1::vocabularySHA256 == RecoveryKeyVocabulary::fileSHA256);
static_assert(RecoveryKeyMnemonicV1::vocabularyWordCount == RecoveryKeyVocabulary::wordCount);
static_assert(wordCount * bitsPerWord == (entropyByteCount + 1) * 8, "256 bits of entropy and 8 of checksum");

// The entropy followed by the first byte of its SHA-256: the 264 bits the words stand for.
using ChecksummedEntropy = std::array<std::uint8_t, entropyByteCount + 1>;

std::uint8_t checksumByte(ByteView entropy) {
  platform::SHA256Digest digest = platform::SHA256::digest(entropy);
  const std::uint8_t first = digest[0];
  platform::SecureMemory::wipe(digest);
  return first;
}

std::uint16_t readWordIndex(const ChecksummedEntropy& bits, std::size_t position) {
  std::uint16_t index = 0;
  for (std::size_t bit = position * bitsPerWord; bit < (position + 1) * bitsPerWord; ++bit) {
    index = static_cast<std::uint16_t>((index << 1) | ((bits[bit / 8] >> (7 - bit % 8)) & 1));
  }
  return index;
}

void writeWordIndex(ChecksummedEntropy& bits, std::size_t position, std::uint16_t index) {
  for (std::size_t offset = 0; offset < bitsPerWord; ++offset) {
    const std::size_t bit = position * bitsPerWord + offset;
    const auto value = static_cast<std::uint8_t>((index >> (bitsPerWord - 1 - offset)) & 1);
    bits[bit / 8] = static_cast<std::uint8_t>(bits[bit / 8] | (value << (7 - bit % 8)));
  }
}

// joinedWords sizes the phrase once, so that no reallocation leaves a partial copy behind.
std::string joinedWords(const RecoveryKeyVocabulary& vocabulary, const ChecksummedEntropy& bits) {
  std::size_t length = wordCount - 1;
  for (std::size_t position = 0; position < wordCount; ++position) {
    length += vocabulary.word(readWordIndex(bits, position)).size();
  }
  std::string phrase;
  phrase.reserve(length);
  for (std::size_t position = 0; position < wordCount; ++position) {
    if (position > 0) phrase.push_back(' ');
    phrase.append(vocabulary.word(readWordIndex(bits, position)));
  }
  return phrase;
}

// normalisedText is NFKD, then lower case; it is a secret, and the caller wipes it. The result
// is returned in place (no move), so no moved-from copy of a short text stays behind.
std::expected<std::string, platform::UnicodeTextError> normalisedText(std::string_view phrase) {
  auto decomposed = platform::UnicodeText::normalizedNFKD(phrase);
  if (!decomposed) return decomposed;
  auto lowered = platform::UnicodeText::lowercased(*decomposed);
  platform::SecureMemory::wipe(*decomposed);
  return lowered;
}

std::expected<Bytes, Error> entropyFromWords(const std::vector<std::string_view>& words, ByteView wordList) {
  const auto vocabulary = RecoveryKeyVocabulary::load(wordList);
  if (!vocabulary) return std::unexpected(Error::invalidWordList());
  ChecksummedEntropy bits{};
  const ScopeGuard wipeBits{[&bits] { platform::SecureMemory::wipe(bits); }};
  for (std::size_t position = 0; position < wordCount; ++position) {
    const auto index = vocabulary->indexOf(words[position]);
    if (!index) return std::unexpected(Error::unknownWord(static_cast<std::int64_t>(position + 1)));
    writeWordIndex(bits, position, *index);
  }
  const ByteView entropy = ByteView(bits).first(entropyByteCount);
  if (checksumByte(entropy) != bits[entropyByteCount]) return std::unexpected(Error::checksumMismatch());
  return Bytes(entropy.begin(), entropy.end());
}

template <typename Value>
std::expected<Value, RecoveryKeyMnemonicV1Failure> asFailure(const Error& error) {
  return std::unexpected(RecoveryKeyMnemonicV1Failure(error));
}

}  // namespace

namespace RecoveryKeyMnemonicV1 {

std::expected<std::string, RecoveryKeyMnemonicV1Failure> generatePhrase() {
  return generatePhrase(RecoveryKeyVocabulary::publishedList());
}

std::expected<std::string, RecoveryKeyMnemonicV1Failure> generatePhrase(ByteView wordList) {
  std::array<std::uint8_t, entropyByteCount> drawn{};
  const ScopeGuard wipeDrawn{[&drawn] { platform::SecureMemory::wipe(drawn); }};
  const std::int32_t status = platform::Random::fill(drawn);
  if (status != 0) return std::unexpected(KeyMaterialError::randomGenerationFailed(status));
  auto words = phrase(drawn, wordList);
  if (!words) return asFailure<std::string>(words.error());
  return std::move(*words);
}

std::expected<std::string, RecoveryKeyMnemonicV1Error> phrase(ByteView entropy) {
  return phrase(entropy, RecoveryKeyVocabulary::publishedList());
}

std::expected<std::string, RecoveryKeyMnemonicV1Error> phrase(ByteView entropy, ByteView wordList) {
  if (entropy.size() != entropyByteCount) {
    return std::unexpected(Error::invalidEntropyByteCount(RecoveryKeyMnemonicV1::entropyByteCount,
                                                          static_cast<std::int64_t>(entropy.size())));
  }
  const auto vocabulary = RecoveryKeyVocabulary::load(wordList);
  if (!vocabulary) return std::unexpected(Error::invalidWordList());
  ChecksummedEntropy bits{};
  const ScopeGuard wipeBits{[&bits] { platform::SecureMemory::wipe(bits); }};
  std::ranges::copy(entropy, bits.begin());
  bits[entropyByteCount] = checksumByte(entropy);
  return joinedWords(*vocabulary, bits);
}

std::expected<Bytes, RecoveryKeyMnemonicV1Error> entropy(std::string_view phrase) {
  return entropy(phrase, RecoveryKeyVocabulary::publishedList());
}

std::expected<Bytes, RecoveryKeyMnemonicV1Error> entropy(std::string_view phrase, ByteView wordList) {
  auto normalised = normalisedText(phrase);
  const ScopeGuard wipeNormalised{[&normalised] {
    if (normalised) platform::SecureMemory::wipe(*normalised);
  }};
  const auto words = normalised ? platform::UnicodeScalars::splittingOnWhiteSpace(*normalised)
                                : std::optional<std::vector<std::string_view>>();
  const std::size_t count = words ? words->size() : 0;
  if (count != wordCount) {
    return std::unexpected(Error::invalidWordCount(RecoveryKeyMnemonicV1::wordCount, static_cast<std::int64_t>(count)));
  }
  return entropyFromWords(*words, wordList);
}

std::expected<RecoveryKeyHandle, RecoveryKeyMnemonicV1Failure> recoveryKey(std::string_view phrase) {
  return recoveryKey(phrase, RecoveryKeyVocabulary::publishedList());
}

std::expected<RecoveryKeyHandle, RecoveryKeyMnemonicV1Failure> recoveryKey(std::string_view phrase, ByteView wordList) {
  auto decoded = entropy(phrase, wordList);
  if (!decoded) return asFailure<RecoveryKeyHandle>(decoded.error());
  const ScopeGuard wipeDecoded{[&decoded] { platform::SecureMemory::wipe(*decoded); }};
  auto storage = SecretKeyStorage::make(*decoded);
  if (!storage) return std::unexpected(KeyMaterialError(storage.error()));
  return RecoveryKeyHandle(std::move(*storage));
}

}  // namespace RecoveryKeyMnemonicV1

}  // namespace galdrine::keys
