#include "GaldrineCryptoSupport/GaldrineArgon2id.hpp"

#include <sodium.h>

#include <atomic>

#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrineCryptoSupport/GaldrineSodiumRuntime.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

static_assert(GaldrineArgon2id::algorithmIdentifier == crypto_pwhash_ALG_ARGON2ID13);
static_assert(GaldrineArgon2id::saltByteCount == crypto_pwhash_SALTBYTES);

namespace {

std::atomic<std::uint64_t> startedDerivationCount{0};

// The library's bounds are read when the call is made, not when this file was compiled, so a
// library built with other limits is still held to its own.
bool withinLibraryBounds(const GaldrineArgon2idParameters& parameters) {
  const auto keyByteCount = static_cast<std::size_t>(GaldrineArgon2id::derivedKeyByteCount);
  const auto memoryLimitBytes = static_cast<std::size_t>(parameters.memoryLimitBytes());  // validated positive
  return keyByteCount >= crypto_pwhash_bytes_min() && keyByteCount <= crypto_pwhash_bytes_max() &&
         parameters.operationsLimit() >= crypto_pwhash_opslimit_min() &&
         parameters.operationsLimit() <= crypto_pwhash_opslimit_max() &&
         memoryLimitBytes >= crypto_pwhash_memlimit_min() && memoryLimitBytes <= crypto_pwhash_memlimit_max();
}

}  // namespace

namespace GaldrineArgon2id {

std::expected<Bytes, GaldrineArgon2idFailure> deriveKey(ByteView passphrase, ByteView salt,
                                                        const GaldrineArgon2idParameters& parameters) {
  const auto started = GaldrineSodiumRuntime::initialize();
  if (!started) return std::unexpected(started.error());
  if (passphrase.empty()) return std::unexpected(GaldrineArgon2idError::emptyPassphrase());
  if (salt.size() != static_cast<std::size_t>(saltByteCount))
    return std::unexpected(GaldrineArgon2idError::invalidSaltLength(saltByteCount, static_cast<std::int64_t>(salt.size())));
  if (!withinLibraryBounds(parameters)) return std::unexpected(GaldrineArgon2idError::derivationFailed());

  Bytes derivedKey(static_cast<std::size_t>(derivedKeyByteCount), 0);
  GaldrineScopeGuard wipeOnFailure{[&derivedKey] { GaldrineSecureMemory::wipe(derivedKey); }};
  startedDerivationCount.fetch_add(1, std::memory_order_relaxed);
  const int result = crypto_pwhash(derivedKey.data(), derivedKey.size(), reinterpret_cast<const char*>(passphrase.data()),
                                   passphrase.size(), salt.data(), parameters.operationsLimit(),
                                   static_cast<std::size_t>(parameters.memoryLimitBytes()), algorithmIdentifier);
  if (result != 0) return std::unexpected(GaldrineArgon2idError::derivationFailed());
  wipeOnFailure.dismiss();  // the caller owns the key now
  return derivedKey;
}

std::uint64_t derivationCount() noexcept { return startedDerivationCount.load(std::memory_order_relaxed); }

}  // namespace GaldrineArgon2id
