// Key storages, handles, identifiers, the hierarchy factory and the key policies.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "keys/KeyDomainPolicy.hpp"
#include "keys/KeyHierarchyFactory.hpp"
#include "keys/LibraryIsolationPolicy.hpp"

namespace galdrine::keys {

namespace {

using Error = KeyMaterialError;

const Bytes kKey = ByteText::bytes("0123456789abcdefghijklmnopqrstuv");
const auto kInvalidated = std::unexpected(Error::invalidated());

Bytes copyOut(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

template <typename Role>
Bytes keyBytes(const KeyHandle<Role>& handle) {
  return handle.storage()->withTemporaryBytes(copyOut).value_or(Bytes{});
}

TEST(KeyMaterial, RefusesOtherLengths) {
  EXPECT_EQ(LibraryDomainIdentifier::make(Bytes(15)).error(), LibraryDomainIdentifierError::invalidByteCount(16, 15));
  EXPECT_EQ(LocalKeyIdentifier::make(Bytes(17)).error(), Error::invalidIdentifierByteCount(16, 17));
  EXPECT_EQ(SecretKeyStorage::make(Bytes(31)).error(), Error::invalidKeyByteCount(32, 31));
  EXPECT_EQ(SecretKeyStorage::make(Bytes(33)).error(), Error::invalidKeyByteCount(32, 33));
}

// The caller's function runs outside the lock, so it may read and even invalidate the storage.
TEST(SecretKeyStorage, InvalidationReachesEveryHandleAndAccess) {
  const auto storage = SecretKeyStorage::make(kKey);
  ASSERT_TRUE(storage.has_value());
  const DatabaseKeyHandle handle(*storage);
  const DatabaseKeyHandle copied = handle;
  const DatabaseKeyAccess access(handle);
  EXPECT_EQ(access.withTemporaryBytes([&copied](ByteView outer) {
    const auto inner = copied.storage()->withTemporaryBytes(copyOut);
    copied.storage()->invalidate();
    return inner == copyOut(outer) ? copyOut(outer) : Bytes{};
  }),
            kKey);
  bool called = false;
  EXPECT_EQ(access.withTemporaryBytes([&called](ByteView) { called = true; }), kInvalidated);
  EXPECT_FALSE(called);
  handle.storage()->invalidate();  // a second invalidation does nothing
  EXPECT_EQ(handle.storage()->withTemporaryBytes(copyOut), kInvalidated);
  EXPECT_EQ(DatabaseKeyAccess(nullptr).withTemporaryBytes(copyOut), kInvalidated);
}

// Readers racing an invalidation see either the whole key or `invalidated`, never a torn or
// zeroed key.
TEST(SecretKeyStorage, ReadersRacingAnInvalidationSeeTheKeyOrNothing) {
  const auto storage = SecretKeyStorage::make(kKey);
  ASSERT_TRUE(storage.has_value());
  const LocalResourceKeyAccess access(*storage);
  std::atomic<bool> start = false;
  std::atomic<int> torn = 0;
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 4; ++reader) {
    readers.emplace_back([&] {
      while (!start) std::this_thread::yield();
      for (int round = 0; round < 2000; ++round) torn += access.withTemporaryBytes(copyOut).value_or(kKey) != kKey;
    });
  }
  start = true;
  access.storage()->invalidate();
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(torn, 0);
}

// drawn gives the bytes of the draw numbered `draw`: no two draws are equal.
Bytes drawn(std::size_t draw, std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) bytes[index] = static_cast<std::uint8_t>(draw * 64 + index);
  return bytes;
}

// A scripted source counts each draw and can fail, come up one byte short, or repeat itself.
struct ScriptedSource {
  std::size_t failingDraw = SIZE_MAX;
  std::size_t shortDraw = SIZE_MAX;
  bool repeating = false;
  std::vector<std::size_t> counts;

  KeyHierarchyFactory factory() {
    return KeyHierarchyFactory([this](std::size_t count) -> std::expected<Bytes, Error> {
      const std::size_t draw = counts.size();
      counts.push_back(count);
      if (draw == failingDraw) return std::unexpected(Error::randomGenerationFailed(-7));
      return drawn(repeating ? 0 : draw, draw == shortDraw ? count - 1 : count);
    });
  }
};

TEST(KeyHierarchyFactory, DrawsTheHierarchyInOrderIntoItsRoles) {
  ScriptedSource source;
  const auto hierarchy = source.factory().createLibraryHierarchy(LibraryRole::decoy);
  ASSERT_TRUE(hierarchy.has_value());
  EXPECT_EQ(hierarchy->domain.role, LibraryRole::decoy);
  EXPECT_EQ(copyOut(hierarchy->domain.identifier.bytes()), drawn(0, 16));
  EXPECT_EQ(keyBytes(hierarchy->libraryMasterKey), drawn(1, 32));
  EXPECT_EQ(keyBytes(hierarchy->databaseKey), drawn(2, 32));
  EXPECT_EQ(copyOut(hierarchy->databaseKeyIdentifier.bytes()), drawn(3, 16));
}

TEST(KeyHierarchyFactory, FailsAtTheFirstBadDraw) {
  struct FailCase {
    std::size_t failingDraw;
    std::size_t shortDraw;
    bool repeating;
    Error expected;
    std::size_t draws;
  };
  const FailCase cases[] = {
      {0, SIZE_MAX, false, Error::randomGenerationFailed(-7), 1},
      {SIZE_MAX, 0, false, Error::randomGeneratorReturnedWrongByteCount(16, 15), 1},
      {SIZE_MAX, 1, false, Error::randomGeneratorReturnedWrongByteCount(32, 31), 2},
      {SIZE_MAX, 3, false, Error::randomGeneratorReturnedWrongByteCount(16, 15), 4},
      {SIZE_MAX, SIZE_MAX, true, Error::duplicateKeyMaterial(), 3},  // master and database key alike
  };
  for (const FailCase& failCase : cases) {
    ScriptedSource source{failCase.failingDraw, failCase.shortDraw, failCase.repeating, {}};
    EXPECT_EQ(source.factory().createLibraryHierarchy(LibraryRole::primary), std::unexpected(failCase.expected));
    EXPECT_EQ(source.counts.size(), failCase.draws);
  }
}

TEST(KeyDomainPolicy, SaysWhichCredentialMayWrapWhichRoot) {
  using Factor = KeyProtectionFactor;
  struct Row {
    Factor factor;
    bool libraryMaster;
    bool backupPackageMaster;
    bool portable;
    bool deviceOnly;
  };
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
    EXPECT_EQ(KeyDomainPolicy::permits(row.factor, WrappedRootKey::backupPackageMaster), row.backupPackageMaster)
        << name;
    EXPECT_EQ(KeyDomainPolicy::isPortable(row.factor), row.portable) << name;
    EXPECT_EQ(KeyDomainPolicy::requiresThisDeviceOnlyMaterial(row.factor), row.deviceOnly) << name;
  }
}

TEST(LibraryIsolationPolicy, KeepsPrimaryAndDecoyApartRoleFirst) {
  using Role = LibraryRole;
  using IsolationError = LibraryIsolationError;
  const auto domain = [](Role role, std::uint8_t fill) {
    return LibraryKeyDomain{role, *LibraryDomainIdentifier::make(Bytes(16, fill))};
  };
  const auto validate = LibraryIsolationPolicy::validatePrimaryDecoyPair;
  EXPECT_TRUE(validate(domain(Role::primary, 1), domain(Role::decoy, 2)).has_value());
  EXPECT_EQ(validate(domain(Role::primary, 1), domain(Role::decoy, 1)),
            std::unexpected(IsolationError::reusedDomainIdentifier));
  EXPECT_EQ(validate(domain(Role::decoy, 1), domain(Role::decoy, 2)), std::unexpected(IsolationError::duplicateRole));
  EXPECT_EQ(validate(domain(Role::primary, 1), domain(Role::primary, 1)),
            std::unexpected(IsolationError::duplicateRole));
}

}  // namespace

}  // namespace galdrine::keys
