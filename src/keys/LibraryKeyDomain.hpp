#pragma once
// LibraryKeyDomain: the role of a library and the identifier of its key domain.

#include "keys/LibraryDomainIdentifier.hpp"
#include "keys/LibraryRole.hpp"

namespace galdrine::keys {

struct LibraryKeyDomain {
  LibraryRole role;
  LibraryDomainIdentifier identifier;

  friend bool operator==(const LibraryKeyDomain&, const LibraryKeyDomain&) = default;
};

}  // namespace galdrine::keys
