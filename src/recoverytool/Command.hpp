#pragma once
// Command is one parsed command line. Each case is a record of its own, so running a command
// is a visit that the compiler checks for completeness. Every path in it is absolute and
// standardised (platform::FilePath::fromArgument).

#include <filesystem>
#include <string>
#include <variant>

#include "credential/CredentialInput.hpp"
#include "envelope/PortableKeyFactorV1.hpp"

namespace galdrine::recoverytool {

// RecoveryRequest is what inspect and export share: the package, the factor to unlock with
// and where the credential comes from.
struct RecoveryRequest {
  std::filesystem::path packagePath;
  envelope::PortableKeyFactorV1 factor = envelope::PortableKeyFactorV1::backupPassphrase;
  credential::CredentialInput credentialInput = credential::CredentialInput::hiddenTerminal;

  friend bool operator==(const RecoveryRequest&, const RecoveryRequest&) = default;
};

// ExportRequest is an export's command line: the recovery request, the selection code of the
// snapshot (64 lower-case hexadecimal digits, checked by the parser) and the destination.
struct ExportRequest {
  RecoveryRequest recovery;
  std::string selectionCode;
  std::filesystem::path destinationPath;

  friend bool operator==(const ExportRequest&, const ExportRequest&) = default;
};

struct Command {
  struct VerifyGolden {
    std::filesystem::path fixturePath;
    friend bool operator==(const VerifyGolden&, const VerifyGolden&) = default;
  };
  struct VerifyFixtures {
    std::filesystem::path indexPath;
    friend bool operator==(const VerifyFixtures&, const VerifyFixtures&) = default;
  };
  struct Inspect {
    RecoveryRequest request;
    friend bool operator==(const Inspect&, const Inspect&) = default;
  };
  struct Export {
    ExportRequest request;
    friend bool operator==(const Export&, const Export&) = default;
  };
  struct Help {
    friend bool operator==(const Help&, const Help&) = default;
  };
  struct SelfTest {
    friend bool operator==(const SelfTest&, const SelfTest&) = default;
  };

  std::variant<VerifyGolden, VerifyFixtures, Inspect, Export, Help, SelfTest> value;

  friend bool operator==(const Command&, const Command&) = default;
};

}  // namespace galdrine::recoverytool
