#pragma once
// LibraryKeyDomain: the role of a library and the identifier of its key domain.

#include <cstdint>

#include "keys/LibraryDomainIdentifier.hpp"

namespace galdrine::keys {

// LibraryRole: a device holds a primary library and may hold a decoy beside it.
enum class LibraryRole : std::uint8_t { primary, decoy };

struct LibraryKeyDomain {
  LibraryRole role;
  LibraryDomainIdentifier identifier;

  friend bool operator==(const LibraryKeyDomain&, const LibraryKeyDomain&) = default;
};

}  // namespace galdrine::keys
