#pragma once
// Command is one parsed command line. Each case is a record of its own, so running a command
// is a visit that the compiler checks for completeness.

#include <filesystem>
#include <variant>

#include "recoverytool/ExportRequest.hpp"
#include "recoverytool/RecoveryRequest.hpp"

namespace galdrine::recoverytool {

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
