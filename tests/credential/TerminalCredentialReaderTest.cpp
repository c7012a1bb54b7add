// The terminal reader: redirected input (its one line ending, its bound, no terminal and no
// endless stream) and the hidden prompt under a pseudo-terminal, neither of which may give
// back a heap block that still holds the credential.

#include "credential/TerminalCredentialReader.hpp"

#include <fcntl.h>
#include <pty.h>
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "platform/SecureMemory.hpp"
#include "support/ProgramRunner.hpp"
#include "support/ReleasedSecretScan.hpp"

namespace galdrine::credential {

namespace {

using enum TerminalCredentialError;
using Result = std::expected<Bytes, TerminalCredentialError>;
namespace Input = TerminalCredentialInput;
namespace Scan = testsupport::ReleasedSecretScan;
constexpr auto passphrase = envelope::PortableKeyFactorV1::backupPassphrase;
constexpr auto recoveryKey = envelope::PortableKeyFactorV1::recoveryKey;

Result readRedirectedFrom(std::string_view contents) {
  const int descriptor = ::memfd_create("credential", MFD_CLOEXEC);
  EXPECT_EQ(::write(descriptor, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
  ::lseek(descriptor, 0, SEEK_SET);
  auto credential = Input::readRedirected(descriptor, 16384);
  ::close(descriptor);
  return credential;
}

TEST(TerminalCredentialReader, RedirectedInputLosesOneFinalLineEndingAndIsBoundedBeforeIt) {
  using namespace std::string_literals;
  const struct {
    std::string input;
    Result expected;
  } cases[] = {
      {"secret\n", ByteText::bytes("secret")},
      {"secret\r\n", ByteText::bytes("secret")},
      {"secret\n\n", ByteText::bytes("secret\n")},
      {"secret\r", ByteText::bytes("secret\r")},
      {"\r\n", ByteText::bytes("")},
      {"", ByteText::bytes("")},
      {"a\nb\0c\xFF\n"s, ByteText::bytes("a\nb\0c\xFF"s)},
      {std::string(16384, 'x'), ByteText::bytes(std::string(16384, 'x'))},
      {std::string(16383, 'x') + '\n', ByteText::bytes(std::string(16383, 'x'))},
      {std::string(16384, 'x') + '\n', std::unexpected(tooLarge)},
      {std::string(100000, '\n'), std::unexpected(tooLarge)},
  };
  for (const auto& testCase : cases)
    EXPECT_EQ(readRedirectedFrom(testCase.input), testCase.expected) << testCase.input.size();
}

TEST(TerminalCredentialReader, RedirectedInputRefusesTerminalsAndStopsEndlessStreams) {
  int master = -1, slave = -1;
  ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
  const int endless = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  const int directory = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);  // every read of it fails
  for (const auto& [descriptor, error] :
       {std::pair{slave, unavailable}, {endless, tooLarge}, {directory, unavailable}}) {
    EXPECT_EQ(Input::readRedirected(descriptor, 16384), std::unexpected(error)) << descriptor;
  }
  for (const int descriptor : {master, slave, endless, directory}) ::close(descriptor);
}

TEST(TerminalCredentialReader, RedirectedReadingReleasesNoUnwipedCopy) {
  const std::string marker = "QZXJ-credential-marker";
  Scan::arm(marker);  // the scan must see an unwiped release, or the cases below prove nothing
  { const std::string copy = marker + std::string(32, '.'); }
  EXPECT_EQ(Scan::disarm(), 1);
  // One line, a credential across two chunks, and one past the bound.
  for (const std::string& contents :
       {marker + "\n", std::string(5000, '.') + marker, marker + std::string(16384, '.')}) {
    Scan::arm(marker);
    {
      auto credential = readRedirectedFrom(contents);
      if (credential) platform::SecureMemory::wipe(*credential);
    }
    EXPECT_EQ(Scan::disarm(), 0) << contents.size();
  }
}

// promptRun reads a credential in a child whose controlling terminal is a fresh
// pseudo-terminal, with `typed` typed at the prompt. After the entry the child writes on the
// terminal "ok:" and what it read, or "failed", and then how many released blocks still held
// the credential's first four bytes, if any did.
testsupport::PseudoTerminalRun promptRun(envelope::PortableKeyFactorV1 factor, std::string_view typed,
                                         std::int64_t maximumByteCount) {
  return testsupport::ProgramRunner::runUnderPseudoTerminal(
      [&] {
        const std::string marker(typed.size() > 4 ? typed.substr(0, 4) : "");
        Scan::arm(marker);
        {
          auto credential = TerminalCredentialReader().read(factor, CredentialInput::hiddenTerminal, maximumByteCount);
          const std::string_view verdict = credential ? "ok:" : "failed";
          (void)!::write(STDOUT_FILENO, verdict.data(), verdict.size());
          if (credential) (void)!::write(STDOUT_FILENO, credential->data(), credential->size());
          if (credential) platform::SecureMemory::wipe(*credential);
        }
        const std::string copies = " released unwiped copies: " + std::to_string(Scan::disarm());
        if (!copies.ends_with(": 0")) (void)!::write(STDOUT_FILENO, copies.data(), copies.size());
        ::_exit(0);
      },
      Input::prompt(factor), typed);
}

TEST(TerminalCredentialReader, HiddenPromptReadsOneLineWithEchoOff) {
  // The terminal shows the prompt, the line break the reader writes after the hidden entry,
  // and then what the child reports.
  const struct {
    envelope::PortableKeyFactorV1 factor;
    std::string_view typed;
    std::int64_t maximumByteCount;
    std::string_view terminal;
  } cases[] = {
      {passphrase, "correct horse\n", 16384, "Backup Passphrase: \r\nok:correct horse"},
      {recoveryKey, "  abandon  ability ü \n", 16384, "24-word Recovery Key: \r\nok:  abandon  ability ü "},
      {passphrase, "0123456789abc\n", 8, "Backup Passphrase: \r\nok:01234567"},
      {passphrase, "\n", 16384, "Backup Passphrase: \r\nfailed"},
  };
  for (const auto& testCase : cases) {
    const testsupport::PseudoTerminalRun run = promptRun(testCase.factor, testCase.typed, testCase.maximumByteCount);
    ASSERT_TRUE(run.promptSeen) << run.terminalOutput;
    EXPECT_TRUE(run.echoOffAtPrompt);
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.terminalOutput, testCase.terminal);
  }
}

}  // namespace

}  // namespace galdrine::credential
