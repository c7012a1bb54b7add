#pragma once
// GeneratedLibraryKeyHierarchy: the keys of a new library, each in its own storage.

#include "keys/KeyHandle.hpp"
#include "keys/LibraryKeyDomain.hpp"
#include "keys/LocalKeyIdentifier.hpp"

namespace galdrine::keys {

struct GeneratedLibraryKeyHierarchy {
  LibraryKeyDomain domain;
  LibraryMasterKeyHandle libraryMasterKey;
  LocalKeyIdentifier databaseKeyIdentifier;
  DatabaseKeyHandle databaseKey;
};

}  // namespace galdrine::keys
