#include "GaldrineKeyManagement/GaldrineKeyDomainPolicy.hpp"

#include <utility>

namespace {

struct FactorRule {
  bool wrapsLibraryMaster;
  bool wrapsBackupPackageMaster;
  bool portable;
  bool thisDeviceOnlyMaterial;
};

constexpr FactorRule ruleFor(GaldrineKeyProtectionFactor factor) {
  switch (factor) {  // no default: a new factor without a rule fails the build
    case GaldrineKeyProtectionFactor::localPassphrase: return {true, false, false, false};
    case GaldrineKeyProtectionFactor::numericAppCodeWithDeviceBinding: return {true, false, false, true};
    case GaldrineKeyProtectionFactor::biometricDeviceKey: return {true, false, false, true};
    case GaldrineKeyProtectionFactor::backupPassphrase: return {false, true, true, false};
    case GaldrineKeyProtectionFactor::recoveryKey: return {true, true, true, false};
  }
  std::unreachable();
}

}  // namespace

namespace GaldrineKeyDomainPolicy {

bool permits(GaldrineKeyProtectionFactor factor, GaldrineWrappedRootKey toWrap) {
  switch (toWrap) {
    case GaldrineWrappedRootKey::libraryMaster: return ruleFor(factor).wrapsLibraryMaster;
    case GaldrineWrappedRootKey::backupPackageMaster: return ruleFor(factor).wrapsBackupPackageMaster;
  }
  std::unreachable();
}

bool isPortable(GaldrineKeyProtectionFactor factor) { return ruleFor(factor).portable; }

bool requiresThisDeviceOnlyMaterial(GaldrineKeyProtectionFactor factor) { return ruleFor(factor).thisDeviceOnlyMaterial; }

}  // namespace GaldrineKeyDomainPolicy
