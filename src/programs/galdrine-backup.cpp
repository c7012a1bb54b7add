// galdrine-backup: makes a backup package of the photos and videos in a directory, and adds
// later states of the directory to it as snapshots. The process runs its argument list,
// without the program's name, against the terminal reader, writes standard output and
// standard error at most once each, wipes what it wrote (it may hold a new recovery key's
// words), and exits with the tool's status.

#include <unistd.h>

#include <string>
#include <vector>

#include "backuptool/BackupTool.hpp"
#include "backuptool/TerminalBackupCredentialReader.hpp"
#include "platform/Files.hpp"
#include "platform/SecureMemory.hpp"

int main(int argc, char** argv) {
  using namespace galdrine;
  std::vector<std::string> arguments(argv + 1, argv + argc);
  backuptool::TerminalBackupCredentialReader credentialReader;
  backuptool::BackupToolExecution execution = backuptool::BackupTool::execute(arguments, credentialReader);
  // A failure to write the program's output is dropped: there is no one left to tell.
  if (!execution.standardOutput.empty()) (void)platform::Files::writeAll(STDOUT_FILENO, execution.standardOutput);
  if (!execution.standardError.empty()) (void)platform::Files::writeAll(STDERR_FILENO, execution.standardError);
  platform::SecureMemory::wipe(execution.standardOutput);
  return execution.exitCode;
}
