#pragma once
// Key handles name each role of key by its own type, so that one key cannot be passed where
// another is expected: a GaldrineDatabaseKeyHandle is no GaldrineLibraryMasterKeyHandle,
// though both are one shared GaldrineSecretKeyStorage inside. Copies of a handle share the
// storage and see its invalidation. Access records are the scoped readers of the two keys
// that are read in place (the database key and local resource keys).
//
// A handle's storage is never null when it was made from GaldrineSecretKeyStorage::make, the
// only way this module makes one.

#include <memory>
#include <utility>

#include "GaldrineKeyManagement/GaldrineSecretKeyStorage.hpp"

template <typename Role>
class GaldrineKeyHandle {
 public:
  explicit GaldrineKeyHandle(std::shared_ptr<GaldrineSecretKeyStorage> storage) : storage_(std::move(storage)) {}
  [[nodiscard]] const std::shared_ptr<GaldrineSecretKeyStorage>& storage() const { return storage_; }

 private:
  std::shared_ptr<GaldrineSecretKeyStorage> storage_;
};

template <typename Role>
class GaldrineKeyAccess {
 public:
  explicit GaldrineKeyAccess(std::shared_ptr<GaldrineSecretKeyStorage> storage) : storage_(std::move(storage)) {}
  explicit GaldrineKeyAccess(const GaldrineKeyHandle<Role>& handle) : storage_(handle.storage()) {}
  [[nodiscard]] const std::shared_ptr<GaldrineSecretKeyStorage>& storage() const { return storage_; }

  // withTemporaryBytes is the storage's: a wiped temporary copy, the function outside the lock,
  // and `invalidated` for an invalidated storage.
  template <typename Function>
  [[nodiscard]] auto withTemporaryBytes(Function&& function) const
      -> std::expected<std::invoke_result_t<Function&, ByteView>, GaldrineKeyMaterialError> {
    if (!storage_) return std::unexpected(GaldrineKeyMaterialError::invalidated());
    return storage_->withTemporaryBytes(std::forward<Function>(function));
  }

 private:
  std::shared_ptr<GaldrineSecretKeyStorage> storage_;
};

struct GaldrineLibraryMasterKeyRole;
struct GaldrineDatabaseKeyRole;
struct GaldrineLocalResourceKeyRole;
struct GaldrineDeviceBindingKeyRole;
struct GaldrineBiometricDeviceKeyRole;
struct GaldrineBackupPackageMasterKeyRole;
struct GaldrineRecoveryKeyRole;

using GaldrineLibraryMasterKeyHandle = GaldrineKeyHandle<GaldrineLibraryMasterKeyRole>;
using GaldrineDatabaseKeyHandle = GaldrineKeyHandle<GaldrineDatabaseKeyRole>;
using GaldrineDatabaseKeyAccess = GaldrineKeyAccess<GaldrineDatabaseKeyRole>;
using GaldrineLocalResourceKeyHandle = GaldrineKeyHandle<GaldrineLocalResourceKeyRole>;
using GaldrineLocalResourceKeyAccess = GaldrineKeyAccess<GaldrineLocalResourceKeyRole>;
using GaldrineDeviceBindingKeyHandle = GaldrineKeyHandle<GaldrineDeviceBindingKeyRole>;
using GaldrineBiometricDeviceKeyHandle = GaldrineKeyHandle<GaldrineBiometricDeviceKeyRole>;
using GaldrineBackupPackageMasterKeyHandle = GaldrineKeyHandle<GaldrineBackupPackageMasterKeyRole>;
using GaldrineRecoveryKeyHandle = GaldrineKeyHandle<GaldrineRecoveryKeyRole>;
