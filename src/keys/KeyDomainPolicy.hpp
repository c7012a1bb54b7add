#pragma once
// KeyDomainPolicy says which credential may protect which root key. Device-bound
// credentials never travel with a backup; portable ones never unlock the library on a device
// except the recovery key, which may protect both roots.

#include "keys/KeyProtectionFactor.hpp"
#include "keys/WrappedRootKey.hpp"

namespace galdrine::keys {

namespace KeyDomainPolicy {

[[nodiscard]] bool permits(KeyProtectionFactor factor, WrappedRootKey toWrap);

// isPortable: the credential works away from this device (it can open a backup package).
[[nodiscard]] bool isPortable(KeyProtectionFactor factor);

// requiresThisDeviceOnlyMaterial: the credential needs key material kept on this device only.
[[nodiscard]] bool requiresThisDeviceOnlyMaterial(KeyProtectionFactor factor);

}  // namespace KeyDomainPolicy

}  // namespace galdrine::keys
