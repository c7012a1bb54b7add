#pragma once
// GaldrineKeyDomainPolicy says which credential may protect which root key. Device-bound
// credentials never travel with a backup; portable ones never unlock the library on a device
// except the recovery key, which may protect both roots.

#include "GaldrineKeyManagement/GaldrineKeyProtectionFactor.hpp"
#include "GaldrineKeyManagement/GaldrineWrappedRootKey.hpp"

namespace GaldrineKeyDomainPolicy {

[[nodiscard]] bool permits(GaldrineKeyProtectionFactor factor, GaldrineWrappedRootKey toWrap);

// isPortable: the credential works away from this device (it can open a backup package).
[[nodiscard]] bool isPortable(GaldrineKeyProtectionFactor factor);

// requiresThisDeviceOnlyMaterial: the credential needs key material kept on this device only.
[[nodiscard]] bool requiresThisDeviceOnlyMaterial(GaldrineKeyProtectionFactor factor);

}  // namespace GaldrineKeyDomainPolicy
