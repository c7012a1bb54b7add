#include "GaldrineBackupCLI/GaldrineBackupCLI_main.hpp"

#include <unistd.h>

#include <string>
#include <vector>

#include "GaldrineBackupCLI/GaldrineBackupToolV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrineBackupCLI/TerminalBackupCredentialReader.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"

namespace {

// A failure to write the program's output is dropped: there is no one left to tell.
void writeWhole(int descriptor, ByteView bytes) { (void)GaldrinePlatformFiles::writeAll(descriptor, bytes); }

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
