#pragma once
// AES-256-GCM with a 12-byte nonce and a 16-byte tag that stays apart from the ciphertext.
// The caller provides the output buffers, so a payload is never copied on its way through.

#include <cstddef>
#include <span>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

namespace AESGCM {

inline constexpr std::size_t keyByteCount = 32;
inline constexpr std::size_t nonceByteCount = 12;
inline constexpr std::size_t tagByteCount = 16;

// seal encrypts `plaintext` into `ciphertext`, which must be exactly as long, and writes the
// tag into `tag` (16 bytes). It returns false when a size is wrong or the library fails; the
// outputs then hold nothing that may be used.
[[nodiscard]] bool seal(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView plaintext,
                        std::span<std::uint8_t> ciphertext, std::span<std::uint8_t> tag);

// open decrypts `ciphertext` into `plaintext`, which must be exactly as long, and verifies
// `tag`. It returns true only if the tag verified; on every failure `plaintext` is zeroed,
// so no unauthenticated byte is left behind.
[[nodiscard]] bool open(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView ciphertext, ByteView tag,
                        std::span<std::uint8_t> plaintext);

}  // namespace AESGCM

}  // namespace galdrine::platform
