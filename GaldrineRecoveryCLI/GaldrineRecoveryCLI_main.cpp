#include "GaldrineRecoveryCLI/GaldrineRecoveryCLI_main.hpp"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "GaldrineRecoveryCLI/TerminalCredentialReader.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolV1.hpp"

namespace {

// writeWhole hands the bytes to the descriptor in one call, continuing only where the
// kernel took part of them or a signal interrupted it. A failure is dropped: there is no
// one left to tell.
void writeWhole(int descriptor, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

}  // namespace

int GaldrineRecoveryCLI_main(int argc, char** argv) {
  std::vector<std::string> arguments;
  for (int index = 1; index < argc; ++index) arguments.emplace_back(argv[index]);
  TerminalCredentialReader credentialReader;
  const GaldrineRecoveryToolExecutionV1 execution = GaldrineRecoveryToolV1::execute(arguments, credentialReader);
  if (!execution.standardOutput.empty()) writeWhole(STDOUT_FILENO, execution.standardOutput);
  if (!execution.standardError.empty()) writeWhole(STDERR_FILENO, execution.standardError);
  return execution.exitCode;
}
