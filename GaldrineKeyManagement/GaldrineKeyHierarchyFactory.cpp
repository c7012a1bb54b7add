#include "GaldrineKeyManagement/GaldrineKeyHierarchyFactory.hpp"

#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrinePlatformConstantTime.hpp"
#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

namespace {

constexpr std::size_t keyByteCount = GaldrineSecretKeyStorage::keyByteCount;

}  // namespace

std::expected<Bytes, GaldrineKeyMaterialError> GaldrineKeyHierarchyFactory::systemRandomBytes(std::size_t byteCount) {
  Bytes bytes(byteCount);
  const std::int32_t status = GaldrinePlatformRandom::fill(bytes);  // zeroes the bytes when it fails
  if (status != 0) return std::unexpected(GaldrineKeyMaterialError::randomGenerationFailed(status));
  return bytes;
}

std::expected<Bytes, GaldrineKeyMaterialError> GaldrineKeyHierarchyFactory::checkedRandomBytes(std::size_t byteCount) const {
  auto drawn = randomBytes_(byteCount);
  if (!drawn) return std::unexpected(drawn.error());
  if (drawn->size() != byteCount) {
    GaldrineSecureMemory::wipe(*drawn);
    return std::unexpected(GaldrineKeyMaterialError::randomGeneratorReturnedWrongByteCount(
        static_cast<std::int64_t>(byteCount), static_cast<std::int64_t>(drawn->size())));
  }
  return drawn;
}

std::expected<std::shared_ptr<GaldrineSecretKeyStorage>, GaldrineKeyMaterialError> GaldrineKeyHierarchyFactory::newKeyStorage()
    const {
  auto key = checkedRandomBytes(keyByteCount);
  if (!key) return std::unexpected(key.error());
  const GaldrineScopeGuard wipeKey{[&key] { GaldrineSecureMemory::wipe(*key); }};
  return GaldrineSecretKeyStorage::make(*key);
}

std::expected<GaldrineLibraryDomainIdentifier, GaldrineKeyMaterialError>
GaldrineKeyHierarchyFactory::createLibraryDomainIdentifier() const {
  const auto bytes = checkedRandomBytes(GaldrineLibraryDomainIdentifier::byteCount);
  if (!bytes) return std::unexpected(bytes.error());
  const auto identifier = GaldrineLibraryDomainIdentifier::make(*bytes);
  if (!identifier) {  // unreachable after the length check, but no value is taken unchecked
    return std::unexpected(GaldrineKeyMaterialError::invalidIdentifierByteCount(identifier.error().expected,
                                                                                identifier.error().actual));
  }
  return *identifier;
}

std::expected<GaldrineLocalKeyIdentifier, GaldrineKeyMaterialError> GaldrineKeyHierarchyFactory::createLocalKeyIdentifier()
    const {
  const auto bytes = checkedRandomBytes(GaldrineLocalKeyIdentifier::byteCount);
  if (!bytes) return std::unexpected(bytes.error());
  return GaldrineLocalKeyIdentifier::make(*bytes);
}

std::expected<GaldrineGeneratedLibraryKeyHierarchy, GaldrineKeyMaterialError>
GaldrineKeyHierarchyFactory::createLibraryHierarchy(GaldrineLibraryRole role) const {
  const auto identifier = createLibraryDomainIdentifier();
  if (!identifier) return std::unexpected(identifier.error());
  return createLibraryHierarchy(role, *identifier);
}

std::expected<GaldrineGeneratedLibraryKeyHierarchy, GaldrineKeyMaterialError>
GaldrineKeyHierarchyFactory::createLibraryHierarchy(GaldrineLibraryRole role,
                                                    const GaldrineLibraryDomainIdentifier& identifier) const {
  auto masterKey = checkedRandomBytes(keyByteCount);
  if (!masterKey) return std::unexpected(masterKey.error());
  const GaldrineScopeGuard wipeMasterKey{[&masterKey] { GaldrineSecureMemory::wipe(*masterKey); }};
  auto databaseKey = checkedRandomBytes(keyByteCount);
  if (!databaseKey) return std::unexpected(databaseKey.error());
  const GaldrineScopeGuard wipeDatabaseKey{[&databaseKey] { GaldrineSecureMemory::wipe(*databaseKey); }};
  // A source that repeats itself is broken; one key must never stand for two roles.
  if (GaldrinePlatformConstantTime::equal(*masterKey, *databaseKey)) {
    return std::unexpected(GaldrineKeyMaterialError::duplicateKeyMaterial());
  }
  const auto databaseKeyIdentifier = createLocalKeyIdentifier();
  if (!databaseKeyIdentifier) return std::unexpected(databaseKeyIdentifier.error());
  auto masterStorage = GaldrineSecretKeyStorage::make(*masterKey);
  if (!masterStorage) return std::unexpected(masterStorage.error());
  auto databaseStorage = GaldrineSecretKeyStorage::make(*databaseKey);
  if (!databaseStorage) return std::unexpected(databaseStorage.error());  // the master storage wipes itself
  return GaldrineGeneratedLibraryKeyHierarchy{
      GaldrineLibraryKeyDomain{role, identifier},
      GaldrineLibraryMasterKeyHandle(std::move(*masterStorage)),
      *databaseKeyIdentifier,
      GaldrineDatabaseKeyHandle(std::move(*databaseStorage)),
  };
}

std::expected<GaldrineGeneratedLocalResourceKey, GaldrineKeyMaterialError>
GaldrineKeyHierarchyFactory::createLocalResourceKey() const {
  const auto keyIdentifier = createLocalKeyIdentifier();
  if (!keyIdentifier) return std::unexpected(keyIdentifier.error());
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return GaldrineGeneratedLocalResourceKey{*keyIdentifier, GaldrineLocalResourceKeyHandle(std::move(*storage))};
}

std::expected<GaldrineBackupPackageMasterKeyHandle, GaldrineKeyMaterialError>
GaldrineKeyHierarchyFactory::createBackupPackageMasterKey() const {
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return GaldrineBackupPackageMasterKeyHandle(std::move(*storage));
}

std::expected<GaldrineRecoveryKeyHandle, GaldrineKeyMaterialError> GaldrineKeyHierarchyFactory::createRecoveryKey() const {
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return GaldrineRecoveryKeyHandle(std::move(*storage));
}
