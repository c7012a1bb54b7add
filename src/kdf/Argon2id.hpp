#pragma once
// Argon2id is the single gateway from a passphrase to a 32-byte key: Argon2id version
// 1.3, one lane, under parameters that have already passed this system's bounds.

#include <cstdint>
#include <expected>
#include <variant>

#include "kdf/Argon2idError.hpp"
#include "kdf/Argon2idParameters.hpp"
#include "kdf/SodiumRuntime.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::kdf {

// A derivation fails because the library could not start (its error as it came), or with one of
// the derivation's own cases.
using Argon2idFailure = std::variant<SodiumRuntimeError, Argon2idError>;

namespace Argon2id {

inline constexpr std::int32_t algorithmIdentifier = 2;  // the library's identifier of Argon2id 1.3
inline constexpr std::uint32_t algorithmVersion = 0x13;
inline constexpr std::int64_t derivedKeyByteCount = 32;
inline constexpr std::int64_t saltByteCount = 16;

// deriveKey hashes `passphrase`, byte for byte as given (nothing is trimmed, normalised or
// re-encoded), with `salt` under `parameters`. Checks, in order: the library starts
// (SodiumRuntimeError::initializationFailed); the passphrase is not empty
// (emptyPassphrase); the salt is 16 bytes (invalidSaltLength); the request lies within the
// library's own run-time bounds, and the hash succeeds, including its allocation of up to
// 256 MiB (derivationFailed). On success the caller owns the 32 key bytes and must wipe them;
// on failure no key byte is left anywhere.
[[nodiscard]] std::expected<Bytes, Argon2idFailure> deriveKey(ByteView passphrase, ByteView salt,
                                                              const Argon2idParameters& parameters);

// derivationCount is the number of hashes this process has started, successful or not; a
// request refused by a check before the hash is not counted. It exists so that a caller's test
// can prove that a path ran no derivation at all: read it before and after, and compare.
[[nodiscard]] std::uint64_t derivationCount() noexcept;

}  // namespace Argon2id

}  // namespace galdrine::kdf
