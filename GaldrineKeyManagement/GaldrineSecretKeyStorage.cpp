#include "GaldrineKeyManagement/GaldrineSecretKeyStorage.hpp"

#include <algorithm>

std::expected<std::shared_ptr<GaldrineSecretKeyStorage>, GaldrineKeyMaterialError> GaldrineSecretKeyStorage::make(
    ByteView bytes) {
  if (bytes.size() != keyByteCount) {
    return std::unexpected(
        GaldrineKeyMaterialError::invalidKeyByteCount(keyByteCount, static_cast<std::int64_t>(bytes.size())));
  }
  std::shared_ptr<GaldrineSecretKeyStorage> storage(new GaldrineSecretKeyStorage());
  // Filled in place, so no second copy of the key exists outside the storage.
  storage->bytes_.emplace();
  std::ranges::copy(bytes, storage->bytes_->begin());
  return storage;
}

void GaldrineSecretKeyStorage::invalidate() noexcept {
  const std::scoped_lock guard(lock_);
  if (!bytes_) return;
  GaldrineSecureMemory::wipe(*bytes_);
  bytes_.reset();
}

bool GaldrineSecretKeyStorage::copyBytes(std::span<std::uint8_t, keyByteCount> destination) const {
  const std::scoped_lock guard(lock_);
  if (!bytes_) return false;
  std::ranges::copy(*bytes_, destination.begin());
  return true;
}
