#pragma once
// FixtureProducerCredentials are the synthetic credentials under which the producer
// seals the envelopes of the key envelope set fixture. They open nothing but fixtures, and a
// test proves with them that those envelopes are real: each opens with the envelope operations
// to the graph fixture's master key.

#include <string_view>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::fixtureproducer {

namespace FixtureProducerCredentials {

inline constexpr std::string_view backupPassphrase = "galdrine fixture passphrase: quiet lantern, 47 orchards";
inline constexpr std::string_view recoveryKeySeed = "galdrine/fixture/v1/key-envelopes/recovery-key";

// recoveryKey is the SHA-256 of its seed, 32 bytes; the caller wipes it.
[[nodiscard]] inline Bytes recoveryKey() {
  const platform::SHA256Digest digest = platform::SHA256::digest(ByteText::view(recoveryKeySeed));
  return Bytes(digest.begin(), digest.end());
}

}  // namespace FixtureProducerCredentials

}  // namespace galdrine::fixtureproducer
