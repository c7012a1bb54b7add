#include <gtest/gtest.h>

#include "keys/KeyDomainPolicy.hpp"
#include "keys/LibraryIsolationPolicy.hpp"
#include "keys/LocalKeyIdentifier.hpp"

namespace galdrine::keys {

namespace {

using Factor = KeyProtectionFactor;

TEST(KeyDomainPolicy, SaysWhichCredentialMayWrapWhichRoot) {
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
    EXPECT_EQ(KeyDomainPolicy::permits(row.factor, WrappedRootKey::libraryMaster), row.libraryMaster) << name;
    EXPECT_EQ(KeyDomainPolicy::permits(row.factor, WrappedRootKey::backupPackageMaster), row.backupPackageMaster) << name;
    EXPECT_EQ(KeyDomainPolicy::isPortable(row.factor), row.portable) << name;
    EXPECT_EQ(KeyDomainPolicy::requiresThisDeviceOnlyMaterial(row.factor), row.deviceOnly) << name;
  }
}

LibraryKeyDomain domain(LibraryRole role, std::uint8_t fill) {
  const auto identifier = LibraryDomainIdentifier::make(Bytes(16, fill));
  return {role, *identifier};
}

TEST(LibraryIsolationPolicy, KeepsPrimaryAndDecoyApart) {
  using Role = LibraryRole;
  using Error = LibraryIsolationError;
  EXPECT_TRUE(LibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::decoy, 2)).has_value());
  EXPECT_EQ(LibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::decoy, 1)),
            std::unexpected(Error::reusedDomainIdentifier));
  EXPECT_EQ(LibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::decoy, 1), domain(Role::decoy, 2)),
            std::unexpected(Error::duplicateRole));
  EXPECT_EQ(LibraryIsolationPolicy::validatePrimaryDecoyPair(domain(Role::primary, 1), domain(Role::primary, 1)),
            std::unexpected(Error::duplicateRole));  // the role is checked first
}

TEST(Identifiers, RefuseOtherLengths) {
  EXPECT_EQ(LibraryDomainIdentifier::make(Bytes(15)).error(), LibraryDomainIdentifierError::invalidByteCount(16, 15));
  EXPECT_EQ(LocalKeyIdentifier::make(Bytes(17)).error(), KeyMaterialError::invalidIdentifierByteCount(16, 17));
  EXPECT_TRUE(LocalKeyIdentifier::make(Bytes(16)).has_value());
}

}  // namespace

}  // namespace galdrine::keys
