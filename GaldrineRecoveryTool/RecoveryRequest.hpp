#pragma once
// RecoveryRequest is what inspect and export share: the package, the factor to unlock with
// and where the credential comes from. packageURL is absolute and standardised.

#include <filesystem>

#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialFactorV1.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialInputV1.hpp"

struct RecoveryRequest {
  std::filesystem::path packageURL;
  GaldrineRecoveryToolCredentialFactorV1 factor = GaldrineRecoveryToolCredentialFactorV1::backupPassphrase;
  GaldrineRecoveryToolCredentialInputV1 credentialInput = GaldrineRecoveryToolCredentialInputV1::hiddenTerminal;

  friend bool operator==(const RecoveryRequest&, const RecoveryRequest&) = default;
};
