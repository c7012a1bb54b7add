#pragma once
// KeyDomainPolicy says which credential may protect which root key. Device-bound
// credentials never travel with a backup; portable ones never unlock the library on a device
// except the recovery key, which may protect both roots.

#include <cstdint>

namespace galdrine::keys {

// KeyProtectionFactor: the credentials that may protect a root key.
enum class KeyProtectionFactor : std::uint8_t {
  localPassphrase,
  numericAppCodeWithDeviceBinding,
  biometricDeviceKey,
  backupPassphrase,
  recoveryKey,
};

// WrappedRootKey: the root keys that a credential may wrap.
enum class WrappedRootKey : std::uint8_t { libraryMaster, backupPackageMaster };

namespace KeyDomainPolicy {

[[nodiscard]] bool permits(KeyProtectionFactor factor, WrappedRootKey toWrap);

// isPortable: the credential works away from this device (it can open a backup package).
[[nodiscard]] bool isPortable(KeyProtectionFactor factor);

// requiresThisDeviceOnlyMaterial: the credential needs key material kept on this device only.
[[nodiscard]] bool requiresThisDeviceOnlyMaterial(KeyProtectionFactor factor);

}  // namespace KeyDomainPolicy

}  // namespace galdrine::keys
