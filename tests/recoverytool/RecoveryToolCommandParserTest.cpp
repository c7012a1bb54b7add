// The command line: each misuse with the error its check order gives, and each form of each
// command with its paths made absolute and standardised.

#include "recoverytool/RecoveryToolCommandParser.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace galdrine::recoverytool {

namespace {

using Arguments = std::vector<std::string>;
using enum RecoveryToolError;
constexpr auto passphrase = envelope::PortableKeyFactorV1::backupPassphrase;
constexpr auto recoveryKey = envelope::PortableKeyFactorV1::recoveryKey;
constexpr auto terminal = credential::CredentialInput::hiddenTerminal;
constexpr auto standardInput = credential::CredentialInput::standardInput;

const std::string code(64, 'a'), upperCaseCode(64, 'A'), shortCode(63, 'a');

TEST(RecoveryToolCommandParser, RefusesEachMisuseWithItsError) {
  const struct {
    const char* name;
    Arguments arguments;
    RecoveryToolError expected;
  } cases[] = {
      {"help with a further word", {"help", "inspect"}, invalidArguments},
      {"unknown command", {"restore", "/p"}, invalidArguments},
      {"app code after a command", {"inspect", "/p", "--recovery-key", "--app-code=1234"}, appCodeForbidden},
      {"app code wins over an earlier credential",
       {"inspect", "--backup-passphrase=x", "--app-code"},
       appCodeForbidden},
      {"app code taken as a snapshot value", {"export", "x", "--snapshot", "--app-code"}, appCodeForbidden},
      {"--app-codes is no app code", {"inspect", "/p", "--recovery-key", "--app-codes"}, invalidArguments},
      {"passphrase value", {"inspect", "/p", "--backup-passphrase=x"}, credentialInArguments},
      {"empty credential value", {"export", "--credential=", "/p"}, credentialInArguments},
      {"credential value after help", {"help", "--recovery-key=abandon"}, credentialInArguments},
      {"verify-golden without a path", {"verify-golden"}, invalidArguments},
      {"inspect without a factor", {"inspect", "a.galdrine"}, invalidArguments},
      {"factor twice", {"inspect", "a.galdrine", "--recovery-key", "--recovery-key"}, invalidArguments},
      {"two paths", {"inspect", "a", "b", "--recovery-key"}, invalidArguments},
      {"stdin flag twice",
       {"inspect", "a", "--credential-stdin", "--credential-stdin", "--recovery-key"},
       invalidArguments},
      {"path beginning with a dash", {"inspect", "-a.galdrine", "--recovery-key"}, invalidArguments},
      {"export without snapshot", {"export", "a", "--destination", "d", "--recovery-key"}, invalidArguments},
      {"snapshot as the last token",
       {"export", "a", "--destination", "d", "--recovery-key", "--snapshot"},
       invalidArguments},
      {"second destination",
       {"export", "a", "--snapshot", code, "--destination", "d", "--destination", "e", "--recovery-key"},
       invalidArguments},
      {"upper-case code",
       {"export", "a", "--snapshot", upperCaseCode, "--destination", "d", "--recovery-key"},
       invalidArguments},
      {"63-character code",
       {"export", "a", "--snapshot", shortCode, "--destination", "d", "--recovery-key"},
       invalidArguments},
  };
  for (const auto& rejectCase : cases) {
    EXPECT_EQ(RecoveryToolCommandParser::parse(rejectCase.arguments), std::unexpected(rejectCase.expected))
        << rejectCase.name;
  }
}

TEST(RecoveryToolCommandParser, ParsesEachCommandFormWithStandardisedPaths) {
  const std::filesystem::path here = std::filesystem::current_path();
  const struct {
    Arguments arguments;
    Command expected;
  } cases[] = {
      {{}, Command{Command::SelfTest{}}},
      {{"self-test"}, Command{Command::SelfTest{}}},
      {{"help"}, Command{Command::Help{}}},
      {{"--help"}, Command{Command::Help{}}},
      {{"-h"}, Command{Command::Help{}}},
      {{"verify-golden", "/f/../g.json"}, Command{Command::VerifyGolden{"/g.json"}}},
      {{"verify-golden", "/../.."}, Command{Command::VerifyGolden{"/"}}},
      {{"verify-fixtures", "i.json"}, Command{Command::VerifyFixtures{here / "i.json"}}},
      {{"verify-fixtures", "../x/./y//i.json/"},
       Command{Command::VerifyFixtures{here.parent_path() / "x" / "y" / "i.json"}}},
      {{"verify-fixtures", ""}, Command{Command::VerifyFixtures{here}}},
      {{"inspect", "/p/a.galdrine", "--recovery-key"},
       Command{Command::Inspect{{"/p/a.galdrine", recoveryKey, terminal}}}},
      {{"inspect", "--credential-stdin", "--backup-passphrase", "/p/./a b ü.galdrine/"},
       Command{Command::Inspect{{"/p/a b ü.galdrine", passphrase, standardInput}}}},
      {{"export", "--destination", "/out/../new", "--recovery-key", "/p/a.galdrine", "--snapshot", code},
       Command{Command::Export{{{"/p/a.galdrine", recoveryKey, terminal}, code, "/new"}}}},
      // Whatever follows --destination is its value.
      {{"export", "/p/a.galdrine", "--snapshot", code, "--destination", "--credential-stdin", "--backup-passphrase"},
       Command{Command::Export{{{"/p/a.galdrine", passphrase, terminal}, code, here / "--credential-stdin"}}}},
  };
  for (const auto& acceptCase : cases) {
    EXPECT_EQ(RecoveryToolCommandParser::parse(acceptCase.arguments), acceptCase.expected)
        << acceptCase.arguments.size();
  }
}

}  // namespace

}  // namespace galdrine::recoverytool
