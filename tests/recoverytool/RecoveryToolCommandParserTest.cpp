#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "recoverytool/RecoveryToolCommandParser.hpp"
#include "recoverytool/RecoveryToolPath.hpp"

namespace galdrine::recoverytool {

namespace {

using Arguments = std::vector<std::string>;
using enum RecoveryToolError;
constexpr auto passphrase = envelope::PortableKeyFactorV1::backupPassphrase;
constexpr auto recoveryKey = envelope::PortableKeyFactorV1::recoveryKey;
constexpr auto terminal = credential::CredentialInput::hiddenTerminal;
constexpr auto standardInput = credential::CredentialInput::standardInput;

const std::string code(64, 'a');

struct RejectCase {
  const char* name;
  Arguments arguments;
  RecoveryToolError expected;
};

const RejectCase rejectCases[] = {
    {"help with a further word", {"help", "inspect"}, invalidArguments},
    {"--help after a command", {"inspect", "--help"}, invalidArguments},
    {"self-test with a further word", {"self-test", "x"}, invalidArguments},
    {"unknown command", {"restore", "/p"}, invalidArguments},
    {"options before the command", {"--recovery-key", "inspect", "/p"}, invalidArguments},
    {"bare app code", {"--app-code"}, appCodeForbidden},
    {"app code with a value after a command", {"inspect", "/p", "--recovery-key", "--app-code=1234"}, appCodeForbidden},
    {"app code wins over an earlier credential", {"inspect", "--backup-passphrase=x", "--app-code"}, appCodeForbidden},
    {"app code taken as a snapshot value", {"export", "x", "--snapshot", "--app-code"}, appCodeForbidden},
    {"--app-codes is no app code", {"inspect", "/p", "--recovery-key", "--app-codes"}, invalidArguments},
    {"passphrase value", {"inspect", "/p", "--backup-passphrase=x"}, credentialInArguments},
    {"recovery key value", {"--recovery-key=abandon"}, credentialInArguments},
    {"credential value", {"export", "--credential=", "/p"}, credentialInArguments},
    {"credential value after help word", {"help", "--backup-passphrase=x"}, credentialInArguments},
    {"verify-golden without a path", {"verify-golden"}, invalidArguments},
    {"verify-golden with two paths", {"verify-golden", "a", "b"}, invalidArguments},
    {"verify-fixtures with two paths", {"verify-fixtures", "a", "b"}, invalidArguments},
    {"inspect alone", {"inspect"}, invalidArguments},
    {"inspect without a factor", {"inspect", "a.galdrine"}, invalidArguments},
    {"inspect without a path", {"inspect", "--recovery-key"}, invalidArguments},
    {"factor twice", {"inspect", "a.galdrine", "--recovery-key", "--recovery-key"}, invalidArguments},
    {"two factors", {"inspect", "a.galdrine", "--recovery-key", "--backup-passphrase"}, invalidArguments},
    {"two paths", {"inspect", "a", "b", "--recovery-key"}, invalidArguments},
    {"stdin flag twice", {"inspect", "a", "--credential-stdin", "--credential-stdin", "--recovery-key"}, invalidArguments},
    {"path beginning with a dash", {"inspect", "-a.galdrine", "--recovery-key"}, invalidArguments},
    {"unknown option", {"inspect", "a", "--recovery-key", "--verbose"}, invalidArguments},
    {"export options on inspect", {"inspect", "a", "--recovery-key", "--snapshot", code}, invalidArguments},
    {"export without snapshot", {"export", "a", "--destination", "d", "--recovery-key"}, invalidArguments},
    {"export without destination", {"export", "a", "--snapshot", code, "--recovery-key"}, invalidArguments},
    {"export without factor", {"export", "a", "--snapshot", code, "--destination", "d"}, invalidArguments},
    {"export without path", {"export", "--snapshot", code, "--destination", "d", "--recovery-key"}, invalidArguments},
    {"snapshot as the last token", {"export", "a", "--destination", "d", "--recovery-key", "--snapshot"}, invalidArguments},
    {"destination as the last token", {"export", "a", "--snapshot", code, "--recovery-key", "--destination"}, invalidArguments},
    {"second destination", {"export", "a", "--snapshot", code, "--destination", "d", "--destination", "e", "--recovery-key"}, invalidArguments},
    {"second snapshot", {"export", "a", "--snapshot", code, "--snapshot", code, "--destination", "d", "--recovery-key"}, invalidArguments},
    {"upper-case code", {"export", "a", "--snapshot", std::string(64, 'A'), "--destination", "d", "--recovery-key"}, invalidArguments},
    {"63-character code", {"export", "a", "--snapshot", std::string(63, 'a'), "--destination", "d", "--recovery-key"}, invalidArguments},
    {"65-character code", {"export", "a", "--snapshot", std::string(65, 'a'), "--destination", "d", "--recovery-key"}, invalidArguments},
    {"code with a g", {"export", "a", "--snapshot", std::string(63, 'a') + "g", "--destination", "d", "--recovery-key"}, invalidArguments},
    {"export with two paths", {"export", "a", "b", "--snapshot", code, "--destination", "d", "--recovery-key"}, invalidArguments},
};

TEST(RecoveryToolCommandParser, RefusesEachMisuseWithItsError) {
  for (const RejectCase& rejectCase : rejectCases) {
    const auto command = RecoveryToolCommandParser::parse(rejectCase.arguments);
    ASSERT_FALSE(command.has_value()) << rejectCase.name;
    EXPECT_EQ(command.error(), rejectCase.expected) << rejectCase.name;
  }
}

struct AcceptCase {
  const char* name;
  Arguments arguments;
  Command expected;
};

TEST(RecoveryToolCommandParser, ParsesEachCommandForm) {
  const std::filesystem::path here = std::filesystem::current_path();
  const AcceptCase acceptCases[] = {
      {"no arguments", {}, Command{Command::SelfTest{}}},
      {"self-test", {"self-test"}, Command{Command::SelfTest{}}},
      {"help", {"help"}, Command{Command::Help{}}},
      {"--help", {"--help"}, Command{Command::Help{}}},
      {"-h", {"-h"}, Command{Command::Help{}}},
      {"verify-golden", {"verify-golden", "/f/../g.json"}, Command{Command::VerifyGolden{"/g.json"}}},
      {"verify-fixtures, relative", {"verify-fixtures", "i.json"}, Command{Command::VerifyFixtures{here / "i.json"}}},
      {"inspect, options after the path",
       {"inspect", "/p/a.galdrine", "--recovery-key"},
       Command{Command::Inspect{{"/p/a.galdrine", recoveryKey, terminal}}}},
      {"inspect, options first",
       {"inspect", "--credential-stdin", "--backup-passphrase", "/p/./a.galdrine/"},
       Command{Command::Inspect{{"/p/a.galdrine", passphrase, standardInput}}}},
      {"export in any order",
       {"export", "--destination", "/out/../new", "--recovery-key", "/p/a.galdrine", "--snapshot", code},
       Command{Command::Export{{{"/p/a.galdrine", recoveryKey, terminal}, code, "/new"}}}},
      {"export takes any token after --destination",
       {"export", "/p/a.galdrine", "--snapshot", code, "--destination", "--credential-stdin", "--backup-passphrase"},
       Command{Command::Export{{{"/p/a.galdrine", passphrase, terminal}, code, here / "--credential-stdin"}}}},
  };
  for (const AcceptCase& acceptCase : acceptCases) {
    const auto command = RecoveryToolCommandParser::parse(acceptCase.arguments);
    ASSERT_TRUE(command.has_value()) << acceptCase.name;
    EXPECT_EQ(*command, acceptCase.expected) << acceptCase.name;
  }
}

TEST(RecoveryToolPath, StandardisesLexicallyAgainstTheCurrentDirectory) {
  const struct {
    const char* argument;
    const char* expected;
  } cases[] = {
      {"a.galdrine", "/home/u/a.galdrine"},
      {"../x/./y.galdrine", "/home/x/y.galdrine"},
      {"a//b/", "/home/u/a/b"},
      {"", "/home/u"},
      {".", "/home/u"},
      {"/a/b/../c/", "/a/c"},
      {"/../..", "/"},
      {"/", "/"},
      {"/a b/ü.galdrine", "/a b/ü.galdrine"},
  };
  for (const auto& testCase : cases) {
    EXPECT_EQ(RecoveryToolPath::standardised(testCase.argument, "/home/u"), std::filesystem::path(testCase.expected))
        << testCase.argument;
  }
}

}  // namespace

}  // namespace galdrine::recoverytool
