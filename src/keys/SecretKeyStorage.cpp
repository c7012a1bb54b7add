#include "keys/SecretKeyStorage.hpp"

#include <algorithm>

namespace galdrine::keys {

std::expected<std::shared_ptr<SecretKeyStorage>, KeyMaterialError> SecretKeyStorage::make(ByteView bytes) {
  if (bytes.size() != keyByteCount) {
    return std::unexpected(
        KeyMaterialError::invalidKeyByteCount(keyByteCount, static_cast<std::int64_t>(bytes.size())));
  }
  std::shared_ptr<SecretKeyStorage> storage(new SecretKeyStorage());
  // Filled in place, so no second copy of the key exists outside the storage.
  storage->bytes_.emplace();
  std::ranges::copy(bytes, storage->bytes_->begin());
  return storage;
}

void SecretKeyStorage::invalidate() noexcept {
  const std::scoped_lock guard(lock_);
  if (!bytes_) return;
  platform::SecureMemory::wipe(*bytes_);
  bytes_.reset();
}

bool SecretKeyStorage::copyBytes(std::span<std::uint8_t, keyByteCount> destination) const {
  const std::scoped_lock guard(lock_);
  if (!bytes_) return false;
  std::ranges::copy(*bytes_, destination.begin());
  return true;
}

}  // namespace galdrine::keys
