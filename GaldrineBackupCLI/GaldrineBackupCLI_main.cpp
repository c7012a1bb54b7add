#include "GaldrineBackupCLI/GaldrineBackupCLI_main.hpp"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "GaldrineBackupCLI/GaldrineBackupToolV1.hpp"
#include "GaldrineBackupCLI/TerminalBackupCredentialReader.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"

namespace {

// writeWhole hands the bytes to the descriptor, continuing only where the kernel took part of
// them or a signal interrupted it. A failure is dropped: there is no one left to tell.
void writeWhole(int descriptor, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

}  // namespace

int GaldrineBackupCLI_main(int argc, char** argv) {
  std::vector<std::string> arguments;
  for (int index = 1; index < argc; ++index) arguments.emplace_back(argv[index]);
  TerminalBackupCredentialReader credentialReader;
  BackupToolExecution execution = GaldrineBackupToolV1::execute(arguments, credentialReader);
  if (!execution.standardOutput.empty()) writeWhole(STDOUT_FILENO, execution.standardOutput);
  if (!execution.standardError.empty()) writeWhole(STDERR_FILENO, execution.standardError);
  GaldrineSecureMemory::wipe(execution.standardOutput);
  return execution.exitCode;
}
