#pragma once
// KeyHierarchyFactory draws the keys and identifiers of a new library from a random
// source, which is the system's secure source unless a caller (a test) gives another.
//
// Every draw is checked: a result of another length than asked is wiped and is
// randomGeneratorReturnedWrongByteCount; the source's own failure passes on unchanged. Every
// key drawn is moved into a SecretKeyStorage and the drawn value wiped, on every path:
// a failure after any key was drawn wipes all that was drawn, and nothing is left behind.

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <utility>

#include "keys/KeyHandle.hpp"
#include "keys/KeyMaterialError.hpp"
#include "keys/LibraryDomainIdentifier.hpp"
#include "keys/LibraryKeyDomain.hpp"
#include "keys/LocalKeyIdentifier.hpp"

namespace galdrine::keys {

// GeneratedLibraryKeyHierarchy: the keys of a new library, each in its own storage.
struct GeneratedLibraryKeyHierarchy {
  LibraryKeyDomain domain;
  LibraryMasterKeyHandle libraryMasterKey;
  LocalKeyIdentifier databaseKeyIdentifier;
  DatabaseKeyHandle databaseKey;
};

// GeneratedLocalResourceKey: a new resource key and its identifier.
struct GeneratedLocalResourceKey {
  LocalKeyIdentifier keyIdentifier;
  LocalResourceKeyHandle key;
};

class KeyHierarchyFactory {
 public:
  using RandomBytes = std::function<std::expected<Bytes, KeyMaterialError>(std::size_t byteCount)>;

  KeyHierarchyFactory() : randomBytes_(systemRandomBytes) {}
  explicit KeyHierarchyFactory(RandomBytes randomBytes) : randomBytes_(std::move(randomBytes)) {}

  // systemRandomBytes draws from the system's secure source; its failure is
  // randomGenerationFailed with the source's status.
  [[nodiscard]] static std::expected<Bytes, KeyMaterialError> systemRandomBytes(std::size_t byteCount);

  [[nodiscard]] const RandomBytes& randomBytes() const { return randomBytes_; }

  [[nodiscard]] std::expected<LibraryDomainIdentifier, KeyMaterialError> createLibraryDomainIdentifier() const;

  // createLibraryHierarchy draws, in this order: the domain identifier (only where none is
  // given), the library master key, the database key (equal keys are duplicateKeyMaterial),
  // and the database key identifier.
  [[nodiscard]] std::expected<GeneratedLibraryKeyHierarchy, KeyMaterialError> createLibraryHierarchy(
      LibraryRole role) const;
  [[nodiscard]] std::expected<GeneratedLibraryKeyHierarchy, KeyMaterialError> createLibraryHierarchy(
      LibraryRole role, const LibraryDomainIdentifier& identifier) const;

  [[nodiscard]] std::expected<LocalKeyIdentifier, KeyMaterialError> createLocalKeyIdentifier() const;

  // createLocalResourceKey draws the identifier, then the key.
  [[nodiscard]] std::expected<GeneratedLocalResourceKey, KeyMaterialError> createLocalResourceKey() const;

  [[nodiscard]] std::expected<BackupPackageMasterKeyHandle, KeyMaterialError> createBackupPackageMasterKey() const;
  [[nodiscard]] std::expected<RecoveryKeyHandle, KeyMaterialError> createRecoveryKey() const;

 private:
  [[nodiscard]] std::expected<Bytes, KeyMaterialError> checkedRandomBytes(std::size_t byteCount) const;
  [[nodiscard]] std::expected<std::shared_ptr<SecretKeyStorage>, KeyMaterialError> newKeyStorage() const;

  RandomBytes randomBytes_;
};

}  // namespace galdrine::keys
