#include "keys/KeyDomainPolicy.hpp"

#include <utility>

namespace galdrine::keys {

namespace {

struct FactorRule {
  bool wrapsLibraryMaster;
  bool wrapsBackupPackageMaster;
  bool portable;
  bool thisDeviceOnlyMaterial;
};

constexpr FactorRule ruleFor(KeyProtectionFactor factor) {
  switch (factor) {  // no default: a new factor without a rule fails the build
    case KeyProtectionFactor::localPassphrase:
      return {true, false, false, false};
    case KeyProtectionFactor::numericAppCodeWithDeviceBinding:
      return {true, false, false, true};
    case KeyProtectionFactor::biometricDeviceKey:
      return {true, false, false, true};
    case KeyProtectionFactor::backupPassphrase:
      return {false, true, true, false};
    case KeyProtectionFactor::recoveryKey:
      return {true, true, true, false};
  }
  std::unreachable();
}

}  // namespace

namespace KeyDomainPolicy {

bool permits(KeyProtectionFactor factor, WrappedRootKey toWrap) {
  switch (toWrap) {
    case WrappedRootKey::libraryMaster:
      return ruleFor(factor).wrapsLibraryMaster;
    case WrappedRootKey::backupPackageMaster:
      return ruleFor(factor).wrapsBackupPackageMaster;
  }
  std::unreachable();
}

bool isPortable(KeyProtectionFactor factor) { return ruleFor(factor).portable; }

bool requiresThisDeviceOnlyMaterial(KeyProtectionFactor factor) { return ruleFor(factor).thisDeviceOnlyMaterial; }

}  // namespace KeyDomainPolicy

}  // namespace galdrine::keys
