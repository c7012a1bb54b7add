#pragma once
// GaldrineLibraryKeyDomain: the role of a library and the identifier of its key domain.

#include "GaldrineKeyManagement/GaldrineLibraryDomainIdentifier.hpp"
#include "GaldrineKeyManagement/GaldrineLibraryRole.hpp"

struct GaldrineLibraryKeyDomain {
  GaldrineLibraryRole role;
  GaldrineLibraryDomainIdentifier identifier;

  friend bool operator==(const GaldrineLibraryKeyDomain&, const GaldrineLibraryKeyDomain&) = default;
};
