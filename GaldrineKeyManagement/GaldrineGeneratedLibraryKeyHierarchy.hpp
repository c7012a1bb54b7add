#pragma once
// GaldrineGeneratedLibraryKeyHierarchy: the keys of a new library, each in its own storage.

#include "GaldrineKeyManagement/GaldrineKeyHandle.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryKeyDomain.hpp"
#include "GaldrineKeyManagement/GaldrineLocalKeyIdentifier.hpp"

struct GaldrineGeneratedLibraryKeyHierarchy {
  GaldrineLibraryKeyDomain domain;
  GaldrineLibraryMasterKeyHandle libraryMasterKey;
  GaldrineLocalKeyIdentifier databaseKeyIdentifier;
  GaldrineDatabaseKeyHandle databaseKey;
};
