#pragma once
// GeneratedLocalResourceKey: a new resource key and its identifier.

#include "keys/KeyHandle.hpp"
#include "keys/LocalKeyIdentifier.hpp"

namespace galdrine::keys {

struct GeneratedLocalResourceKey {
  LocalKeyIdentifier keyIdentifier;
  LocalResourceKeyHandle key;
};

}  // namespace galdrine::keys
