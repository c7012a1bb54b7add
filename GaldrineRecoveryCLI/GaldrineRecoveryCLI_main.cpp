#include "GaldrineRecoveryCLI/GaldrineRecoveryCLI_main.hpp"

#include <unistd.h>

#include <string>
#include <vector>

#include "GaldrineRecoveryCLI/TerminalCredentialReader.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolV1.hpp"

namespace {

// A failure to write the program's output is dropped: there is no one left to tell.
void writeWhole(int descriptor, ByteView bytes) { (void)GaldrinePlatformFiles::writeAll(descriptor, bytes); }

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
