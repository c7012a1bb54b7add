#include "backuptool/BackupToolCommandParser.hpp"

#include <gtest/gtest.h>

#include "backuptool/BackupTool.hpp"
#include "backuptool/BackupToolUsage.hpp"

namespace galdrine::backuptool {

namespace {

using Factor = envelope::PortableKeyFactorV1;
using Input = credential::CredentialInput;
using Reading = std::expected<Bytes, credential::CredentialReadingFailure>;

// run executes `arguments` with a reader that must not be asked for a credential.
[[nodiscard]] BackupToolExecution run(const std::vector<std::string>& arguments) {
  struct Unasked final : BackupToolCredentialReading {
    Reading read(Factor, Input, std::int64_t) override { return asked(); }
    Reading readRepeatedPassphrase(std::int64_t) override { return asked(); }
    static Reading asked() {
      ADD_FAILURE() << "a credential was asked for";
      return std::unexpected(credential::CredentialReadingFailure{});
    }
  } reader;
  return BackupTool::execute(arguments, reader);
}

// Every misuse ends before a credential is asked for or a path is looked at, with its exact
// status and text; the order of the checks decides where several faults meet.
TEST(BackupToolCommandParser, MisuseEndsWithItsStatusAndTextBeforeAnyCredential) {
  const std::string usage(backupToolUsageText);
  const std::string appCode = "Local App Code is device-only and cannot unlock a portable Galdrine backup.\n";
  const std::string inArguments =
      "Never pass a credential in command arguments. Use the hidden prompt or --credential-stdin.\n";
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
      {{"add", "a.galdrine", "--from", "d", "--backup-passphrase=secret words here"}, inArguments},
      {{"create", "a.galdrine", "--from", "d", "--new-recovery-key=abandon"}, inArguments},
      {{"add", "a.galdrine", "--from", "d", "--recovery-key=abandon ability"}, inArguments},
      {{"help", "--credential=x"}, inArguments},
      {{"add", "a.galdrine", "--credential=x", "--app-code"}, appCode},
      {{"create", "a.galdrine", "--from", "--app-code=1234", "--new-recovery-key"}, appCode},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(run(test.arguments), (BackupToolExecution{2, {}, ByteText::bytes(test.text)}))
        << (test.arguments.empty() ? "(none)" : test.arguments.back());
  }
}

TEST(BackupToolCommandParser, OptionsStandInAnyOrderAndPathsComeBackAbsolute) {
  for (const std::string word : {"help", "--help", "-h"}) {
    EXPECT_EQ(run({word}), (BackupToolExecution{0, ByteText::bytes(backupToolUsageText), {}})) << word;
  }
  const std::filesystem::path here = std::filesystem::current_path();
  const struct {
    std::vector<std::string> arguments;
    BackupToolCommand expected;
  } cases[] = {
      {{"create", "new.galdrine", "--from", "Pictures/./2023/", "--backup-passphrase"},
       {BackupToolCommand::Create{here / "new.galdrine", here / "Pictures/2023", true, false, Input::hiddenTerminal}}},
      {{"create", "--new-recovery-key", "--credential-stdin", "--backup-passphrase", "--from", "/src",
        "/x/../p.galdrine"},
       {BackupToolCommand::Create{"/p.galdrine", "/src", true, true, Input::standardInput}}},
      {{"create", "/p.galdrine", "--new-recovery-key", "--from", "/src"},
       {BackupToolCommand::Create{"/p.galdrine", "/src", false, true, Input::hiddenTerminal}}},
      // The token after --from is its value, whatever it looks like.
      {{"add", "--recovery-key", "/p.galdrine", "--from", "-odd"},
       {BackupToolCommand::Add{"/p.galdrine", here / "-odd", Factor::recoveryKey, Input::hiddenTerminal}}},
      {{"add", "/p.galdrine", "--credential-stdin", "--from", "/src", "--backup-passphrase"},
       {BackupToolCommand::Add{"/p.galdrine", "/src", Factor::backupPassphrase, Input::standardInput}}},
  };
  for (const auto& test : cases)
    EXPECT_EQ(BackupToolCommandParser::parse(test.arguments), test.expected) << test.arguments.back();
}

}  // namespace

}  // namespace galdrine::backuptool
