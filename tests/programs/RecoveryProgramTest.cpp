#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "recoverytool/RecoveryToolUsage.hpp"
#include "support/PseudoTerminal.hpp"

namespace galdrine::programs {

namespace {

const std::string program = GALDRINE_RECOVERY_EXECUTABLE;
const std::string selfTestText = "Galdrine recovery self-test passed for com.galdrine.backup.v1.\n";

testsupport::ProgramRun run(const std::vector<std::string>& arguments, std::string_view standardInput = {}) {
  return testsupport::runProgram(program, arguments, standardInput);
}

TEST(RecoveryProgram, SelfTestAndHelpPrintOnStandardOutput) {
  const struct {
    std::vector<std::string> arguments;
    std::string expected;
  } cases[] = {
      {{}, selfTestText},
      {{"self-test"}, selfTestText},
      {{"help"}, std::string(recoverytool::recoveryToolUsageText)},
      {{"--help"}, std::string(recoverytool::recoveryToolUsageText)},
      {{"-h"}, std::string(recoverytool::recoveryToolUsageText)},
  };
  for (const auto& testCase : cases) {
    const testsupport::ProgramRun result = run(testCase.arguments);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.standardOutput, testCase.expected);
    EXPECT_EQ(result.standardError, "");
  }
  EXPECT_EQ(run({"help"}).standardOutput.size(), 614u);
}

TEST(RecoveryProgram, EachFailurePrintsOnlyItsTextOnStandardError) {
  const struct {
    std::vector<std::string> arguments;
    std::string standardInput;
    int exitStatus;
    std::string text;
  } cases[] = {
      {{"help", "inspect"}, "", 2, std::string(recoverytool::recoveryToolUsageText)},
      {{"inspect", "a.galdrine"}, "", 2, std::string(recoverytool::recoveryToolUsageText)},
      {{"inspect", "a.galdrine", "--recovery-key", "--app-code=1234"}, "", 2,
       "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase=x"}, "", 2,
       "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase"}, "", 3, "The credential could not be read securely.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase", "--credential-stdin"}, "\n", 3, "The portable credential is invalid.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase", "--credential-stdin"}, std::string(16385, 'x'), 3,
       "The credential could not be read securely.\n"},
      {{"inspect", "a.galdrine", "--backup-passphrase", "--credential-stdin"}, std::string(16384, 'x'), 4,
       "The backup package is invalid or unsupported.\n"},
      {{"export", "a.galdrine", "--snapshot", std::string(64, '0'), "--destination", "out", "--recovery-key",
        "--credential-stdin"},
       "words\n", 3, "The portable credential is invalid.\n"},
      {{"verify-golden", "no-such-golden.json"}, "", 4, "Galdrine compatibility verification failed.\n"},
  };
  for (const auto& testCase : cases) {
    const testsupport::ProgramRun result = run(testCase.arguments, testCase.standardInput);
    EXPECT_EQ(result.exitStatus, testCase.exitStatus) << testCase.arguments[0];
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError, testCase.text);
  }
}

TEST(RecoveryProgram, HiddenPromptAnswersOnTheTerminal) {
  const std::string arguments[] = {program, "inspect", "a.galdrine", "--recovery-key"};
  const testsupport::PseudoTerminalRun session = testsupport::runUnderPseudoTerminal(
      [&] {
        ::execl(program.c_str(), arguments[0].c_str(), arguments[1].c_str(), arguments[2].c_str(), arguments[3].c_str(),
                static_cast<char*>(nullptr));
      },
      "24-word Recovery Key: ", "abandon ability\n");
  ASSERT_TRUE(session.promptSeen) << session.terminalOutput;
  EXPECT_TRUE(session.echoOffAtPrompt);
  EXPECT_FALSE(session.terminalOutput.contains("abandon"));
  EXPECT_TRUE(session.terminalOutput.ends_with("The portable credential is invalid.\r\n")) << session.terminalOutput;
  EXPECT_EQ(session.exitStatus, 3);
}

}  // namespace

}  // namespace galdrine::programs
