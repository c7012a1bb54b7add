#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <sys/mman.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "platform/SecureMemory.hpp"
#include "credential/TerminalCredentialReader.hpp"
#include "support/PseudoTerminal.hpp"
#include "ReleasedSecretScan.hpp"

namespace galdrine::credential {

namespace {

using enum TerminalCredentialError;
constexpr auto passphrase = envelope::PortableKeyFactorV1::backupPassphrase;
constexpr auto recoveryKey = envelope::PortableKeyFactorV1::recoveryKey;

std::expected<Bytes, TerminalCredentialError> readRedirectedFrom(std::string_view contents, std::int64_t maximumByteCount) {
  const int descriptor = ::memfd_create("credential", MFD_CLOEXEC);
  EXPECT_GE(descriptor, 0);
  EXPECT_EQ(::write(descriptor, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
  ::lseek(descriptor, 0, SEEK_SET);
  auto credential = TerminalCredentialInput::readRedirected(descriptor, maximumByteCount);
  ::close(descriptor);
  return credential;
}

TEST(TerminalCredentialReader, RedirectedInputLosesOnlyOneFinalLineEnding) {
  using namespace std::string_literals;
  const struct {
    std::string input;
    std::string expected;
  } cases[] = {
      {"secret\n", "secret"},
      {"secret\r\n", "secret"},
      {"secret\n\n", "secret\n"},
      {"secret\r", "secret\r"},
      {"secret\n\r", "secret\n\r"},
      {"\n", ""},
      {"\r\n", ""},
      {"", ""},
      {"  two words \n", "  two words "},
      {"a\nb\0c\xFF\n"s, "a\nb\0c\xFF"s},
  };
  for (const auto& testCase : cases) {
    const auto credential = readRedirectedFrom(testCase.input, 16384);
    ASSERT_TRUE(credential.has_value()) << testCase.input;
    EXPECT_EQ(*credential, ByteText::bytes(testCase.expected)) << testCase.input;
  }
}

TEST(TerminalCredentialReader, RedirectedInputIsBoundedBeforeTheLineEndingGoes) {
  const struct {
    std::string input;
    std::optional<std::size_t> expectedByteCount;
  } cases[] = {
      {std::string(16384, 'x'), 16384},
      {std::string(16383, 'x') + '\n', 16383},
      {std::string(16384, 'x') + '\n', std::nullopt},
      {std::string(16385, '\n'), std::nullopt},
      {std::string(100000, 'x'), std::nullopt},
  };
  for (const auto& testCase : cases) {
    const auto credential = readRedirectedFrom(testCase.input, 16384);
    if (testCase.expectedByteCount) {
      ASSERT_TRUE(credential.has_value()) << testCase.input.size();
      EXPECT_EQ(credential->size(), *testCase.expectedByteCount);
    } else {
      EXPECT_EQ(credential, std::unexpected(tooLarge)) << testCase.input.size();
    }
  }
}

TEST(TerminalCredentialReader, RedirectedInputRefusesTerminalsAndStopsEndlessStreams) {
  int master = -1;
  int slave = -1;
  ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(TerminalCredentialInput::readRedirected(slave, 16384), std::unexpected(unavailable));
  ::close(master);
  ::close(slave);

  const int endless = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  ASSERT_GE(endless, 0);
  EXPECT_EQ(TerminalCredentialInput::readRedirected(endless, 16384), std::unexpected(tooLarge));
  ::close(endless);

  const int directory = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_GE(directory, 0);
  EXPECT_EQ(TerminalCredentialInput::readRedirected(directory, 16384), std::unexpected(unavailable));
  ::close(directory);
}

// releasedCopiesAfterRedirectedRead reads `contents` with the scan armed for `marker`, wipes
// what it got like the driver does, and counts released blocks that still held the marker.
int releasedCopiesAfterRedirectedRead(std::string_view contents, std::string_view marker) {
  ReleasedSecretScan::arm(marker);
  {
    auto credential = readRedirectedFrom(contents, 16384);
    if (credential) platform::SecureMemory::wipe(*credential);
  }
  return ReleasedSecretScan::disarm();
}

TEST(TerminalCredentialReader, RedirectedReadingLeavesNoCopyBehind) {
  const std::string marker = "QZXJ-credential-marker";
  const std::string roads[] = {marker + "\n", marker + "\r\n", marker, std::string(5000, '.') + marker,
                               marker + std::string(16384, '.')};
  for (const std::string& contents : roads) {
    EXPECT_EQ(releasedCopiesAfterRedirectedRead(contents, marker), 0) << contents.size();
  }
  // The scan itself sees an unwiped release.
  ReleasedSecretScan::arm(marker);
  { const std::string copy = marker + std::string(32, '.'); }
  EXPECT_EQ(ReleasedSecretScan::disarm(), 1);
}

struct PromptOutcome {
  testsupport::PseudoTerminalRun terminal;
  std::string result;  // "ok:" and the credential, or "failed"
};

// answerHiddenPrompt reads a credential in a child whose controlling terminal is a fresh
// pseudo-terminal, types `typed` at the prompt, and reports what the child read.
PromptOutcome answerHiddenPrompt(envelope::PortableKeyFactorV1 factor, std::string_view typed,
                                 std::int64_t maximumByteCount = 16384) {
  int report[2];
  EXPECT_EQ(::pipe2(report, O_CLOEXEC), 0);
  PromptOutcome outcome;
  outcome.terminal = testsupport::runUnderPseudoTerminal(
      [&] {
        // The credential's first four bytes mark it; no released block may still hold them.
        const std::string marker(typed.size() > 4 ? typed.substr(0, 4) : "");
        std::string message;
        message.reserve(256);  // filled inside the scan without a temporary copy
        ReleasedSecretScan::arm(marker);
        {
          auto credential = TerminalCredentialInput::readHiddenPrompt(factor, maximumByteCount);
          message.assign(credential ? "ok:" : "failed");
          // append(pointer, count): the iterator form would build a temporary copy first.
          if (credential) message.append(reinterpret_cast<const char*>(credential->data()), credential->size());
          if (credential) platform::SecureMemory::wipe(*credential);
        }
        const int copies = ReleasedSecretScan::disarm();
        if (copies != 0) message = "released unwiped copies: " + std::to_string(copies);
        (void)!::write(report[1], message.data(), message.size());
        ::_exit(0);
      },
      TerminalCredentialInput::prompt(factor), typed);
  ::close(report[1]);
  char chunk[256];
  ssize_t count = 0;
  while ((count = ::read(report[0], chunk, sizeof chunk)) > 0) outcome.result.append(chunk, static_cast<std::size_t>(count));
  ::close(report[0]);
  return outcome;
}

TEST(TerminalCredentialReader, HiddenPromptReadsOneLineWithEchoOff) {
  const struct {
    envelope::PortableKeyFactorV1 factor;
    std::string_view prompt;
    std::string_view typed;
    std::int64_t maximumByteCount;
    std::string_view expected;
  } cases[] = {
      {passphrase, "Backup Passphrase: ", "correct horse\n", 16384, "ok:correct horse"},
      {recoveryKey, "24-word Recovery Key: ", "  abandon  ability ü \n", 16384, "ok:  abandon  ability ü "},
      {passphrase, "Backup Passphrase: ", "0123456789abc\n", 8, "ok:01234567"},
      {passphrase, "Backup Passphrase: ", "\n", 16384, "failed"},
  };
  for (const auto& testCase : cases) {
    EXPECT_EQ(TerminalCredentialInput::prompt(testCase.factor), testCase.prompt);
    const PromptOutcome outcome = answerHiddenPrompt(testCase.factor, testCase.typed, testCase.maximumByteCount);
    ASSERT_TRUE(outcome.terminal.promptSeen) << outcome.terminal.terminalOutput;
    EXPECT_TRUE(outcome.terminal.terminalOutput.starts_with(testCase.prompt)) << outcome.terminal.terminalOutput;
    EXPECT_TRUE(outcome.terminal.echoOffAtPrompt);
    EXPECT_EQ(outcome.result, testCase.expected);
    EXPECT_EQ(outcome.terminal.exitStatus, 0);
    if (testCase.typed.size() > 1) {
      const std::string_view firstWord = testCase.typed.substr(0, testCase.typed.find_first_of(" \n", 2));
      EXPECT_FALSE(outcome.terminal.terminalOutput.contains(firstWord)) << outcome.terminal.terminalOutput;
    }
  }
}

TEST(TerminalCredentialReader, HiddenPromptWithoutControllingTerminalFails) {
  int report[2];
  ASSERT_EQ(::pipe2(report, O_CLOEXEC), 0);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::setsid();  // a new session has no controlling terminal
    const auto credential = TerminalCredentialInput::readHiddenPrompt(passphrase, 16384);
    const char verdict = credential ? 'r' : (credential.error() == unavailable ? 'u' : 'o');
    (void)!::write(report[1], &verdict, 1);
    ::_exit(0);
  }
  ::close(report[1]);
  char verdict = 0;
  EXPECT_EQ(::read(report[0], &verdict, 1), 1);
  ::close(report[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(verdict, 'u');
}

}  // namespace

}  // namespace galdrine::credential
