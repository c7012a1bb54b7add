#pragma once
// Key handles name each role of key by its own type, so that one key cannot be passed where
// another is expected: a DatabaseKeyHandle is no LibraryMasterKeyHandle,
// though both are one shared SecretKeyStorage inside. Copies of a handle share the
// storage and see its invalidation. Access records are the scoped readers of the two keys
// that are read in place (the database key and local resource keys).
//
// A handle's storage is never null when it was made from SecretKeyStorage::make, the
// only way this module makes one.

#include <memory>
#include <utility>

#include "keys/SecretKeyStorage.hpp"

namespace galdrine::keys {

template <typename Role>
class KeyHandle {
 public:
  explicit KeyHandle(std::shared_ptr<SecretKeyStorage> storage) : storage_(std::move(storage)) {}
  [[nodiscard]] const std::shared_ptr<SecretKeyStorage>& storage() const { return storage_; }

 private:
  std::shared_ptr<SecretKeyStorage> storage_;
};

template <typename Role>
class KeyAccess {
 public:
  explicit KeyAccess(std::shared_ptr<SecretKeyStorage> storage) : storage_(std::move(storage)) {}
  explicit KeyAccess(const KeyHandle<Role>& handle) : storage_(handle.storage()) {}
  [[nodiscard]] const std::shared_ptr<SecretKeyStorage>& storage() const { return storage_; }

  // withTemporaryBytes is the storage's: a wiped temporary copy, the function outside the lock,
  // and `invalidated` for an invalidated storage.
  template <typename Function>
  [[nodiscard]] auto withTemporaryBytes(Function&& function) const
      -> std::expected<std::invoke_result_t<Function&, ByteView>, KeyMaterialError> {
    if (!storage_) return std::unexpected(KeyMaterialError::invalidated());
    return storage_->withTemporaryBytes(std::forward<Function>(function));
  }

 private:
  std::shared_ptr<SecretKeyStorage> storage_;
};

struct LibraryMasterKeyRole;
struct DatabaseKeyRole;
struct LocalResourceKeyRole;
struct DeviceBindingKeyRole;
struct BiometricDeviceKeyRole;
struct BackupPackageMasterKeyRole;
struct RecoveryKeyRole;

using LibraryMasterKeyHandle = KeyHandle<LibraryMasterKeyRole>;
using DatabaseKeyHandle = KeyHandle<DatabaseKeyRole>;
using DatabaseKeyAccess = KeyAccess<DatabaseKeyRole>;
using LocalResourceKeyHandle = KeyHandle<LocalResourceKeyRole>;
using LocalResourceKeyAccess = KeyAccess<LocalResourceKeyRole>;
using DeviceBindingKeyHandle = KeyHandle<DeviceBindingKeyRole>;
using BiometricDeviceKeyHandle = KeyHandle<BiometricDeviceKeyRole>;
using BackupPackageMasterKeyHandle = KeyHandle<BackupPackageMasterKeyRole>;
using RecoveryKeyHandle = KeyHandle<RecoveryKeyRole>;

}  // namespace galdrine::keys
