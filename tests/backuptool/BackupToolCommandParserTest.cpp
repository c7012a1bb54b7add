#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "BackupToolTestSupport.hpp"
#include "backuptool/BackupToolCommandParser.hpp"
#include "backuptool/BackupToolFailureOutput.hpp"
#include "backuptool/BackupToolUsage.hpp"

namespace galdrine::backuptool {

namespace {

namespace fs = std::filesystem;
using Factor = envelope::PortableKeyFactorV1;
using Input = credential::CredentialInput;

const std::string usage(backupToolUsageText);
const std::string appCodeText = "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n";
const std::string credentialText =
    "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n";

// Every misuse ends before a credential is asked for or a path is looked at, with the exact
// status and text; the order of the checks decides where several faults meet.
TEST(BackupToolCommandParser, MisuseEndsWithItsStatusAndTextBeforeAnyCredential) {
  const struct {
    std::vector<std::string> arguments;
    std::string text;
  } cases[] = {
      {{}, usage},
      {{"help", "create"}, usage},
      {{"create", "--help"}, usage},
      {{"frobnicate", "a.galdrine"}, usage},
      {{"create", "a.galdrine", "--from", "d"}, usage},
      {{"create", "a.galdrine", "--from", "d", "--recovery-key"}, usage},
      {{"create", "a.galdrine", "--from", "d", "--new-recovery-key", "--credential-stdin"}, usage},
      {{"create", "a.galdrine", "--from", "d", "--backup-passphrase", "--backup-passphrase"}, usage},
      {{"create", "a.galdrine", "--from", "d", "--from", "e", "--new-recovery-key"}, usage},
      {{"create", "a.galdrine", "--new-recovery-key", "--from"}, usage},
      {{"create", "a.galdrine", "b.galdrine", "--from", "d", "--new-recovery-key"}, usage},
      {{"create", "--from", "d", "--new-recovery-key"}, usage},
      {{"create", "a.galdrine", "--new-recovery-key"}, usage},
      {{"create", "-a.galdrine", "--from", "d", "--new-recovery-key"}, usage},
      {{"add", "a.galdrine", "--from", "d"}, usage},
      {{"add", "a.galdrine", "--from", "d", "--backup-passphrase", "--recovery-key"}, usage},
      {{"add", "a.galdrine", "--from", "d", "--new-recovery-key"}, usage},
      {{"add", "a.galdrine", "--from", "d", "--recovery-key", "--credential-stdin", "--credential-stdin"}, usage},
      {{"add", "a.galdrine", "--from", "d", "--recovery-key", "--verbose"}, usage},
      {{"add", "a.galdrine", "--from", "d", "--backup-passphrase=secret words here"}, credentialText},
      {{"create", "a.galdrine", "--from", "d", "--new-recovery-key=abandon"}, credentialText},
      {{"add", "a.galdrine", "--from", "d", "--recovery-key=abandon ability"}, credentialText},
      {{"help", "--credential=x"}, credentialText},
      {{"add", "a.galdrine", "--credential=x", "--app-code"}, appCodeText},
      {{"create", "a.galdrine", "--from", "--app-code=1234", "--new-recovery-key"}, appCodeText},
  };
  for (const auto& testCase : cases) {
    ScriptedCredentialReader reader({"a strong passphrase"});
    const BackupToolRun run = runBackupTool(testCase.arguments, reader);
    const std::string shown = testCase.arguments.empty() ? "(none)" : testCase.arguments.back();
    EXPECT_EQ(run.exitStatus, 2) << shown;
    EXPECT_EQ(run.standardOutput, "") << shown;
    EXPECT_EQ(run.standardError, testCase.text) << shown;
    EXPECT_TRUE(reader.reads.empty()) << shown;
  }
}

TEST(BackupToolCommandParser, HelpIsTheOnlyArgumentAndGoesToStandardOutput) {
  for (const std::string word : {"help", "--help", "-h"}) {
    ScriptedCredentialReader reader;
    const BackupToolRun run = runBackupTool({word}, reader);
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.standardOutput, usage);
    EXPECT_EQ(run.standardError, "");
  }
  EXPECT_TRUE(usage.starts_with("Usage:\n  galdrine-backup create <new.galdrine> --from <directory>\n"));
}

TEST(BackupToolCommandParser, OptionsStandInAnyOrderAndPathsComeBackAbsolute) {
  const fs::path here = fs::current_path();
  const struct {
    std::vector<std::string> arguments;
    BackupToolCommand expected;
  } cases[] = {
      {{"create", "new.galdrine", "--from", "Pictures/./2023/", "--backup-passphrase"},
       {BackupToolCommand::Create{here / "new.galdrine", here / "Pictures/2023", true, false, Input::hiddenTerminal}}},
      {{"create", "--new-recovery-key", "--credential-stdin", "--backup-passphrase", "--from", "/src", "/x/../p.galdrine"},
       {BackupToolCommand::Create{"/p.galdrine", "/src", true, true, Input::standardInput}}},
      {{"create", "/p.galdrine", "--new-recovery-key", "--from", "/src"},
       {BackupToolCommand::Create{"/p.galdrine", "/src", false, true, Input::hiddenTerminal}}},
      // The token after --from is its value, whatever it looks like.
      {{"add", "--recovery-key", "/p.galdrine", "--from", "-odd"},
       {BackupToolCommand::Add{"/p.galdrine", here / "-odd", Factor::recoveryKey, Input::hiddenTerminal}}},
      {{"add", "/p.galdrine", "--credential-stdin", "--from", "/src", "--backup-passphrase"},
       {BackupToolCommand::Add{"/p.galdrine", "/src", Factor::backupPassphrase, Input::standardInput}}},
  };
  for (const auto& testCase : cases) {
    const auto command = BackupToolCommandParser::parse(testCase.arguments);
    ASSERT_TRUE(command.has_value()) << testCase.arguments.back();
    EXPECT_EQ(*command, testCase.expected) << testCase.arguments.back();
  }
}

// Each row of the table is one line on standard error with a status of its class; only the
// misuse of the command line shows the usage.
TEST(BackupToolFailureOutput, EveryErrorIsOneLineWithAStatusOfItsClass) {
  for (int raw = 0; raw <= static_cast<int>(BackupToolError::operationFailed); ++raw) {
    const auto error = static_cast<BackupToolError>(raw);
    const BackupToolFailureOutput output = failureOutput(error);
    EXPECT_TRUE(output.exitCode >= 2 && output.exitCode <= 5) << raw;
    if (error == BackupToolError::invalidArguments) continue;
    EXPECT_EQ(std::ranges::count(output.standardError, '\n'), 1) << raw;
    EXPECT_TRUE(output.standardError.ends_with(".\n")) << raw;
  }
  EXPECT_EQ(failureOutput(BackupToolError::passphraseMismatch), (BackupToolFailureOutput{3, "The two passphrase entries differ.\n"}));
  EXPECT_EQ(failureOutput(BackupToolError::sourceChanged),
            (BackupToolFailureOutput{5, "A source file changed or could not be read while it was backed up.\n"}));
  EXPECT_EQ(failureOutput(BackupToolError::unlockFailed),
            (BackupToolFailureOutput{4, "The portable credential did not unlock the backup.\n"}));
}

}  // namespace

}  // namespace galdrine::backuptool
