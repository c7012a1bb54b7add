#pragma once
// AESGCMFrameV1 is the one container of every encrypted object of a package: the
// deterministic CBOR map {0: schema, 1: "aes-256-gcm", 2: nonce (12 bytes), 3: ciphertext,
// 4: tag (16 bytes), 5: plaintext byte count}. It keeps no state, owns no key and touches no
// file; key, authenticated data and plaintext limit are the caller's. The whole encoding is
// what callers hash and store.
//
// Every operation first checks, in this order: a 32-byte key, non-empty authenticated data,
// and a limit from 0 to largestPlaintextLimit. Key and plaintext arrive and leave as ordinary
// bytes; wiping them is the business of their holders.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string_view>
#include <variant>

#include "format/header/BackupFormatV1.hpp"
#include "format/cbor/CBORError.hpp"
#include "format/sealing/AESGCMFrameV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// Sealing fails in the frame's own checks, or (never with valid input) in the codec.
using AESGCMFrameV1Failure = std::variant<CBORError, AESGCMFrameV1Error>;

namespace AESGCMFrameV1 {

inline constexpr std::string_view schemaIdentifier = BackupFormatV1::sealedFrameSchemaIdentifier;
inline constexpr std::string_view algorithmName = rawValue(BackupAlgorithmV1::payloadAEAD);
inline constexpr std::size_t keyByteCount = 32;
inline constexpr std::size_t nonceByteCount = 12;
inline constexpr std::size_t tagByteCount = 16;
// largestPlaintextLimit is the largest maximumPlaintextByteCount a caller may pass (16 MiB).
inline constexpr std::int64_t largestPlaintextLimit = 16777216;

// seal encrypts `plaintext` under `key` and `authenticatedData` with a fresh random nonce and
// gives the frame's bytes. After the common checks: a plaintext longer than the limit is
// plaintextLimitExceeded; a failure of the random source or the cipher is authenticationFailed.
[[nodiscard]] std::expected<Bytes, AESGCMFrameV1Failure> seal(ByteView plaintext, ByteView key,
                                                                      ByteView authenticatedData,
                                                                      std::int64_t maximumPlaintextByteCount);

// sealDeterministicFixture is seal with the caller's nonce, which must be 12 bytes (else
// invalidNonceByteCount, checked after the plaintext limit). A nonce must never be used twice
// under one key: only known-answer fixtures and writers that draw their own nonce call this.
[[nodiscard]] std::expected<Bytes, AESGCMFrameV1Failure> sealDeterministicFixture(
    ByteView plaintext, ByteView key, ByteView authenticatedData, std::int64_t maximumPlaintextByteCount, ByteView nonce);

// open authenticates and decrypts `frame`. After the common checks, in this order: the bytes
// must be one canonical CBOR item within the frame's limits (else malformedFrame), a map of
// exactly the keys 0 to 5 (invalidFrameFieldSet), with the schema and algorithm texts
// (invalidFrameFieldType(0 or 1), unsupportedFrameSchema, unsupportedAlgorithm), a 12-byte nonce
// (invalidFrameFieldType(2), invalidNonceByteCount), a ciphertext (invalidFrameFieldType(3)), a
// 16-byte tag (invalidFrameFieldType(4), authenticationFailed), an unsigned plaintext count
// (invalidFrameFieldType(5)) within the limit and equal to the ciphertext's length
// (plaintextLengthMismatch). Only then is it decrypted. No plaintext byte leaves unless the tag
// verified: a wrong key, wrong authenticated data and a damaged frame all read as
// authenticationFailed.
[[nodiscard]] std::expected<Bytes, AESGCMFrameV1Error> open(ByteView frame, ByteView key,
                                                                    ByteView authenticatedData,
                                                                    std::int64_t maximumPlaintextByteCount);

}  // namespace AESGCMFrameV1

}  // namespace galdrine::format
