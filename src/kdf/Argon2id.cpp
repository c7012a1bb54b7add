#include "kdf/Argon2id.hpp"

#include <sodium.h>

#include <atomic>

#include "kdf/SodiumRuntime.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::kdf {

static_assert(Argon2id::algorithmIdentifier == crypto_pwhash_ALG_ARGON2ID13);
static_assert(Argon2id::saltByteCount == crypto_pwhash_SALTBYTES);

namespace {

std::atomic<std::uint64_t> startedDerivationCount{0};

// The library's bounds are read when the call is made, not when this file was compiled, so a
// library built with other limits is still held to its own.
bool withinLibraryBounds(const Argon2idParameters& parameters) {
  const auto keyByteCount = static_cast<std::size_t>(Argon2id::derivedKeyByteCount);
  const auto memoryLimitBytes = static_cast<std::size_t>(parameters.memoryLimitBytes());  // validated positive
  return keyByteCount >= crypto_pwhash_bytes_min() && keyByteCount <= crypto_pwhash_bytes_max() &&
         parameters.operationsLimit() >= crypto_pwhash_opslimit_min() &&
         parameters.operationsLimit() <= crypto_pwhash_opslimit_max() &&
         memoryLimitBytes >= crypto_pwhash_memlimit_min() && memoryLimitBytes <= crypto_pwhash_memlimit_max();
}

}  // namespace

namespace Argon2id {

std::expected<Bytes, Argon2idFailure> deriveKey(ByteView passphrase, ByteView salt,
                                                const Argon2idParameters& parameters) {
  const auto started = SodiumRuntime::initialize();
  if (!started) return std::unexpected(started.error());
  if (passphrase.empty()) return std::unexpected(Argon2idError::emptyPassphrase());
  if (salt.size() != static_cast<std::size_t>(saltByteCount))
    return std::unexpected(Argon2idError::invalidSaltLength(saltByteCount, static_cast<std::int64_t>(salt.size())));
  if (!withinLibraryBounds(parameters)) return std::unexpected(Argon2idError::derivationFailed());

  Bytes derivedKey(static_cast<std::size_t>(derivedKeyByteCount), 0);
  ScopeGuard wipeOnFailure{[&derivedKey] { platform::SecureMemory::wipe(derivedKey); }};
  startedDerivationCount.fetch_add(1, std::memory_order_relaxed);
  const int result =
      crypto_pwhash(derivedKey.data(), derivedKey.size(), reinterpret_cast<const char*>(passphrase.data()),
                    passphrase.size(), salt.data(), parameters.operationsLimit(),
                    static_cast<std::size_t>(parameters.memoryLimitBytes()), algorithmIdentifier);
  if (result != 0) return std::unexpected(Argon2idError::derivationFailed());
  wipeOnFailure.dismiss();  // the caller owns the key now
  return derivedKey;
}

std::uint64_t derivationCount() noexcept { return startedDerivationCount.load(std::memory_order_relaxed); }

}  // namespace Argon2id

}  // namespace galdrine::kdf
