#pragma once
// FixtureProducerBytes gives the fixed bytes of a fixture set: identifiers, salts, nonces and
// synthetic keys, each the leading bytes of the SHA-256 of its own label. Different labels give
// unrelated bytes, so no nonce repeats under a key as long as no label does.

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::fixtureproducer {

namespace FixtureProducerBytes {

inline constexpr std::size_t identifierByteCount = 16;
inline constexpr std::size_t nonceByteCount = 12;
inline constexpr std::size_t keyByteCount = 32;

// labelled gives `byteCount` (at most 32) bytes for `label`.
[[nodiscard]] inline Bytes labelled(std::string_view label, std::size_t byteCount) {
  const std::string text = "galdrine/fixture/v1/producer/" + std::string(label);
  const platform::SHA256Digest digest = platform::SHA256::digest(ByteText::view(text));
  return Bytes(digest.begin(), digest.begin() + static_cast<std::ptrdiff_t>(byteCount));
}

[[nodiscard]] inline Bytes identifier(std::string_view label) { return labelled(label, identifierByteCount); }
[[nodiscard]] inline Bytes nonce(std::string_view label) { return labelled(label, nonceByteCount); }

[[nodiscard]] inline Bytes digestOf(ByteView bytes) {
  const platform::SHA256Digest digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

}  // namespace FixtureProducerBytes

}  // namespace galdrine::fixtureproducer
