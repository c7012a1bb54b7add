#include "keys/KeyHierarchyFactory.hpp"

#include "platform/ConstantTime.hpp"
#include "platform/Random.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::keys {

namespace {

constexpr std::size_t keyByteCount = SecretKeyStorage::keyByteCount;

}  // namespace

std::expected<Bytes, KeyMaterialError> KeyHierarchyFactory::systemRandomBytes(std::size_t byteCount) {
  Bytes bytes(byteCount);
  const std::int32_t status = platform::Random::fill(bytes);  // zeroes the bytes when it fails
  if (status != 0) return std::unexpected(KeyMaterialError::randomGenerationFailed(status));
  return bytes;
}

std::expected<Bytes, KeyMaterialError> KeyHierarchyFactory::checkedRandomBytes(std::size_t byteCount) const {
  auto drawn = randomBytes_(byteCount);
  if (!drawn) return std::unexpected(drawn.error());
  if (drawn->size() != byteCount) {
    platform::SecureMemory::wipe(*drawn);
    return std::unexpected(KeyMaterialError::randomGeneratorReturnedWrongByteCount(
        static_cast<std::int64_t>(byteCount), static_cast<std::int64_t>(drawn->size())));
  }
  return drawn;
}

std::expected<std::shared_ptr<SecretKeyStorage>, KeyMaterialError> KeyHierarchyFactory::newKeyStorage() const {
  auto key = checkedRandomBytes(keyByteCount);
  if (!key) return std::unexpected(key.error());
  const ScopeGuard wipeKey{[&key] { platform::SecureMemory::wipe(*key); }};
  return SecretKeyStorage::make(*key);
}

std::expected<LibraryDomainIdentifier, KeyMaterialError> KeyHierarchyFactory::createLibraryDomainIdentifier() const {
  const auto bytes = checkedRandomBytes(LibraryDomainIdentifier::byteCount);
  if (!bytes) return std::unexpected(bytes.error());
  const auto identifier = LibraryDomainIdentifier::make(*bytes);
  if (!identifier) {  // unreachable after the length check, but no value is taken unchecked
    return std::unexpected(
        KeyMaterialError::invalidIdentifierByteCount(identifier.error().expected, identifier.error().actual));
  }
  return *identifier;
}

std::expected<LocalKeyIdentifier, KeyMaterialError> KeyHierarchyFactory::createLocalKeyIdentifier() const {
  const auto bytes = checkedRandomBytes(LocalKeyIdentifier::byteCount);
  if (!bytes) return std::unexpected(bytes.error());
  return LocalKeyIdentifier::make(*bytes);
}

std::expected<GeneratedLibraryKeyHierarchy, KeyMaterialError> KeyHierarchyFactory::createLibraryHierarchy(
    LibraryRole role) const {
  const auto identifier = createLibraryDomainIdentifier();
  if (!identifier) return std::unexpected(identifier.error());
  return createLibraryHierarchy(role, *identifier);
}

std::expected<GeneratedLibraryKeyHierarchy, KeyMaterialError> KeyHierarchyFactory::createLibraryHierarchy(
    LibraryRole role, const LibraryDomainIdentifier& identifier) const {
  auto masterKey = checkedRandomBytes(keyByteCount);
  if (!masterKey) return std::unexpected(masterKey.error());
  const ScopeGuard wipeMasterKey{[&masterKey] { platform::SecureMemory::wipe(*masterKey); }};
  auto databaseKey = checkedRandomBytes(keyByteCount);
  if (!databaseKey) return std::unexpected(databaseKey.error());
  const ScopeGuard wipeDatabaseKey{[&databaseKey] { platform::SecureMemory::wipe(*databaseKey); }};
  // A source that repeats itself is broken; one key must never stand for two roles.
  if (platform::ConstantTime::equal(*masterKey, *databaseKey)) {
    return std::unexpected(KeyMaterialError::duplicateKeyMaterial());
  }
  const auto databaseKeyIdentifier = createLocalKeyIdentifier();
  if (!databaseKeyIdentifier) return std::unexpected(databaseKeyIdentifier.error());
  auto masterStorage = SecretKeyStorage::make(*masterKey);
  if (!masterStorage) return std::unexpected(masterStorage.error());
  auto databaseStorage = SecretKeyStorage::make(*databaseKey);
  if (!databaseStorage) return std::unexpected(databaseStorage.error());  // the master storage wipes itself
  return GeneratedLibraryKeyHierarchy{
      LibraryKeyDomain{role, identifier},
      LibraryMasterKeyHandle(std::move(*masterStorage)),
      *databaseKeyIdentifier,
      DatabaseKeyHandle(std::move(*databaseStorage)),
  };
}

std::expected<GeneratedLocalResourceKey, KeyMaterialError> KeyHierarchyFactory::createLocalResourceKey() const {
  const auto keyIdentifier = createLocalKeyIdentifier();
  if (!keyIdentifier) return std::unexpected(keyIdentifier.error());
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return GeneratedLocalResourceKey{*keyIdentifier, LocalResourceKeyHandle(std::move(*storage))};
}

std::expected<BackupPackageMasterKeyHandle, KeyMaterialError> KeyHierarchyFactory::createBackupPackageMasterKey()
    const {
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return BackupPackageMasterKeyHandle(std::move(*storage));
}

std::expected<RecoveryKeyHandle, KeyMaterialError> KeyHierarchyFactory::createRecoveryKey() const {
  auto storage = newKeyStorage();
  if (!storage) return std::unexpected(storage.error());
  return RecoveryKeyHandle(std::move(*storage));
}

}  // namespace galdrine::keys
