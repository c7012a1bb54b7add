#pragma once
// AuthenticationScope is what every artifact of one package opens under: the package, the
// library domain of its envelope set, and the bpmk, which stays its owner's.

#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::recovery {

struct AuthenticationScope {
  const format::BackupPackageV1& package;
  ByteView libraryDomainIdentifier;
  ByteView bpmk;
};

}  // namespace galdrine::recovery
