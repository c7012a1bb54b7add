#include <gtest/gtest.h>

#include "GaldrineKeyManagement/GaldrineKeyDomainPolicy.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryIsolationPolicy.hpp"
#include "GaldrineKeyManagement/GaldrineLocalKeyIdentifier.hpp"

namespace {

using Factor = GaldrineKeyProtectionFactor;

TEST(GaldrineKeyDomainPolicy, SaysWhichCredentialMayWrapWhichRoot) {
  struct Row { Factor factor; bool libraryMaster; bool backupPackageMaster; bool portable; bool deviceOnly; };
  const Row rows[] = {
      {Factor::localPassphrase, true, false, false, false},
      {Factor::numericAppCodeWithDeviceBinding, true, false, false, true},
      {Factor::biometricDeviceKey, true, false, false, true},
      {Factor::backupPassphrase, false, true, true, false},
      {Factor::recoveryKey, true, true, true, false},
  };
  for (const Row& row : rows) {
    const auto name = static_cast<int>(row.factor);
    EXPECT_EQ(GaldrineKeyDomainPolicy::permits(row.factor, GaldrineWrappedRootKey::libraryMaster), row.libraryMaster) << name;
    EXPECT_EQ(GaldrineKeyDomainPolicy::permits(row.factor, GaldrineWrappedRootKey::backupPackageMaster), row.backupPackageMaster) << name;
    EXPECT_EQ(GaldrineKeyDomainPolicy::isPortable(row.factor), row.portable) << name;
    EXPECT_EQ(GaldrineKeyDomainPolicy::requiresThisDeviceOnlyMaterial(row.factor), row.deviceOnly) << name;
  }
}

GaldrineLibraryKeyDomain domain(GaldrineLibraryRole role, std::uint8_t fill) {
  const auto identifier = GaldrineLibraryDomainIdentifier::make(Bytes(16, fill));
  return {role, *identifier};
}

TEST(GaldrineLibraryIsolationPolicy, KeepsPrimaryAndDecoyApart) {
  using Role = GaldrineLibraryRole;
  using Error = GaldrineLibraryIsolationError;
  EXPECT_TRUE(GaldrineLibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::decoy, 2)).has_value());
  EXPECT_EQ(GaldrineLibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::decoy, 1)),
            std::unexpected(Error::reusedDomainIdentifier));
  EXPECT_EQ(GaldrineLibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::decoy, 1), domain(Role::decoy, 2)),
            std::unexpected(Error::duplicateRole));
  EXPECT_EQ(GaldrineLibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::primary, 1)),
            std::unexpected(Error::duplicateRole));  // the role is checked first
}

TEST(GaldrineIdentifiers, RefuseOtherLengths) {
  EXPECT_EQ(GaldrineLibraryDomainIdentifier::make(Bytes(15)).error(), GaldrineLibraryDomainIdentifierError::invalidByteCount(16, 15));
  EXPECT_EQ(GaldrineLocalKeyIdentifier::make(Bytes(17)).error(), GaldrineKeyMaterialError::invalidIdentifierByteCount(16, 17));
  EXPECT_TRUE(GaldrineLocalKeyIdentifier::make(Bytes(16)).has_value());
}

}  // namespace
