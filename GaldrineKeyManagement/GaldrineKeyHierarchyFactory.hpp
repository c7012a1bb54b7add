#pragma once
// GaldrineKeyHierarchyFactory draws the keys and identifiers of a new library from a random
// source, which is the system's secure source unless a caller (a test) gives another.
//
// Every draw is checked: a result of another length than asked is wiped and is
// randomGeneratorReturnedWrongByteCount; the source's own failure passes on unchanged. Every
// key drawn is moved into a GaldrineSecretKeyStorage and the drawn value wiped, on every path:
// a failure after any key was drawn wipes all that was drawn, and nothing is left behind.

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <utility>

#include "GaldrineKeyManagement/GaldrineGeneratedLibraryKeyHierarchy.hpp"
#include "GaldrineKeyManagement/GaldrineGeneratedLocalResourceKey.hpp"
#include "GaldrineKeyManagement/GaldrineKeyHandle.hpp"
#include "GaldrineKeyManagement/GaldrineKeyMaterialError.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryDomainIdentifier.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryRole.hpp"
#include "GaldrineKeyManagement/GaldrineLocalKeyIdentifier.hpp"

class GaldrineKeyHierarchyFactory {
 public:
  using RandomBytes = std::function<std::expected<Bytes, GaldrineKeyMaterialError>(std::size_t byteCount)>;

  GaldrineKeyHierarchyFactory() : randomBytes_(systemRandomBytes) {}
  explicit GaldrineKeyHierarchyFactory(RandomBytes randomBytes) : randomBytes_(std::move(randomBytes)) {}

  // systemRandomBytes draws from the system's secure source; its failure is
  // randomGenerationFailed with the source's status.
  [[nodiscard]] static std::expected<Bytes, GaldrineKeyMaterialError> systemRandomBytes(std::size_t byteCount);

  [[nodiscard]] const RandomBytes& randomBytes() const { return randomBytes_; }

  [[nodiscard]] std::expected<GaldrineLibraryDomainIdentifier, GaldrineKeyMaterialError> createLibraryDomainIdentifier() const;

  // createLibraryHierarchy draws, in this order: the domain identifier (only where none is
  // given), the library master key, the database key (equal keys are duplicateKeyMaterial),
  // and the database key identifier.
  [[nodiscard]] std::expected<GaldrineGeneratedLibraryKeyHierarchy, GaldrineKeyMaterialError> createLibraryHierarchy(
      GaldrineLibraryRole role) const;
  [[nodiscard]] std::expected<GaldrineGeneratedLibraryKeyHierarchy, GaldrineKeyMaterialError> createLibraryHierarchy(
      GaldrineLibraryRole role, const GaldrineLibraryDomainIdentifier& identifier) const;

  [[nodiscard]] std::expected<GaldrineLocalKeyIdentifier, GaldrineKeyMaterialError> createLocalKeyIdentifier() const;

  // createLocalResourceKey draws the identifier, then the key.
  [[nodiscard]] std::expected<GaldrineGeneratedLocalResourceKey, GaldrineKeyMaterialError> createLocalResourceKey() const;

  [[nodiscard]] std::expected<GaldrineBackupPackageMasterKeyHandle, GaldrineKeyMaterialError> createBackupPackageMasterKey() const;
  [[nodiscard]] std::expected<GaldrineRecoveryKeyHandle, GaldrineKeyMaterialError> createRecoveryKey() const;

 private:
  [[nodiscard]] std::expected<Bytes, GaldrineKeyMaterialError> checkedRandomBytes(std::size_t byteCount) const;
  [[nodiscard]] std::expected<std::shared_ptr<GaldrineSecretKeyStorage>, GaldrineKeyMaterialError> newKeyStorage() const;

  RandomBytes randomBytes_;
};
