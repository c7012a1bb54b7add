// galdrine-recovery as a process: what it writes on which stream, with which status. The
// credential's reading is the terminal reader's (tests/credential) and the runs on packages
// are the round trip's (BackupRoundTripTest).

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recoverytool/RecoveryToolUsage.hpp"
#include "support/ProgramRunner.hpp"

namespace galdrine::programs {

namespace {

TEST(RecoveryProgram, EachRunWritesOneStreamWithItsStatus) {
  const std::string usage(recoverytool::recoveryToolUsageText);
  const std::string selfTest = "Galdrine recovery self-test passed for com.galdrine.backup.v1.\n";
  const struct {
    std::vector<std::string> arguments;
    std::string standardInput;
    int exitStatus;
    std::string standardOutput;
    std::string standardError;
  } cases[] = {
      {{}, "", 0, selfTest, ""},
      {{"-h"}, "", 0, usage, ""},
      {{"help", "inspect"}, "", 2, "", usage},
      // No controlling terminal: the hidden prompt has no one to ask.
      {{"inspect", "a.galdrine", "--backup-passphrase"}, "", 3, "", "The credential could not be read securely.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase", "--credential-stdin"},
       std::string(16384, 'x'),
       4,
       "",
       "The backup package is invalid or unsupported.\n"},
  };
  for (const auto& testCase : cases) {
    const auto result =
        testsupport::ProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, testCase.arguments, testCase.standardInput);
    EXPECT_EQ(result.exitStatus, testCase.exitStatus) << testCase.standardError;
    EXPECT_EQ(result.standardOutput, testCase.standardOutput);
    EXPECT_EQ(result.standardError, testCase.standardError);
  }
}

}  // namespace

}  // namespace galdrine::programs
