#pragma once
// RecoveryRequest is what inspect and export share: the package, the factor to unlock with
// and where the credential comes from. packagePath is absolute and standardised.

#include <filesystem>

#include "envelope/PortableKeyFactorV1.hpp"
#include "credential/CredentialInput.hpp"

namespace galdrine::recoverytool {

struct RecoveryRequest {
  std::filesystem::path packagePath;
  envelope::PortableKeyFactorV1 factor = envelope::PortableKeyFactorV1::backupPassphrase;
  credential::CredentialInput credentialInput = credential::CredentialInput::hiddenTerminal;

  friend bool operator==(const RecoveryRequest&, const RecoveryRequest&) = default;
};

}  // namespace galdrine::recoverytool
