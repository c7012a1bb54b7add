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

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string_view>
#include <variant>

#include "format/cbor/CBORError.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// AESGCMFrameV1Error is why a frame could not be sealed or opened. Cases stand in the order of
// the frame's contract; only invalidFrameFieldType carries a payload, the key.
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

  static constexpr AESGCMFrameV1Error invalidFrameFieldType(std::uint64_t key) {
    return {Code::invalidFrameFieldType, key};
  }
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

using Nonce = std::array<std::uint8_t, nonceByteCount>;

// NonceSource is where a seal takes its nonce from. The default is the system's secure random
// source, a fresh nonce for every seal, and every writer uses it. fixed(nonce) hands the
// caller's bytes to the seal instead: for frames that must come out the same on every run
// (known-answer fixtures, tests, the fuzz target) and for a caller that drew the nonce itself.
// A nonce must never be used twice under one key, so a fixed source serves one seal. It only
// views the caller's bytes, which must outlive the seal.
class NonceSource {
 public:
  NonceSource() = default;
  [[nodiscard]] static NonceSource fixed(ByteView nonce) { return NonceSource(nonce); }

  // next gives the nonce of one seal: the fixed bytes, which must be 12 (else
  // invalidNonceByteCount), or 12 fresh random bytes (a failed source is authenticationFailed).
  [[nodiscard]] std::expected<Nonce, AESGCMFrameV1Error> next() const;

 private:
  explicit NonceSource(ByteView nonce) : fixed_(nonce) {}

  std::optional<ByteView> fixed_;
};

// seal encrypts `plaintext` under `key` and `authenticatedData` with a nonce from
// `nonceSource` and gives the frame's bytes. After the common checks: a plaintext longer than
// the limit is plaintextLimitExceeded; only then is the nonce taken (its own failures, above);
// a failure of the cipher is authenticationFailed.
[[nodiscard]] std::expected<Bytes, AESGCMFrameV1Failure> seal(ByteView plaintext, ByteView key,
                                                              ByteView authenticatedData,
                                                              std::int64_t maximumPlaintextByteCount,
                                                              const NonceSource& nonceSource = {});

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
[[nodiscard]] std::expected<Bytes, AESGCMFrameV1Error> open(ByteView frame, ByteView key, ByteView authenticatedData,
                                                            std::int64_t maximumPlaintextByteCount);

}  // namespace AESGCMFrameV1

}  // namespace galdrine::format
