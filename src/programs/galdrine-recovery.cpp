// galdrine-recovery: gets the media of an encrypted backup package back with a portable
// credential. The process runs its argument list, without the program's name, against the
// terminal reader, writes standard output and standard error at most once each, and exits
// with the tool's status.

#include <unistd.h>

#include <string>
#include <vector>

#include "credential/TerminalCredentialReader.hpp"
#include "platform/Files.hpp"
#include "recoverytool/RecoveryTool.hpp"

int main(int argc, char** argv) {
  using namespace galdrine;
  std::vector<std::string> arguments(argv + 1, argv + argc);
  credential::TerminalCredentialReader credentialReader;
  const recoverytool::RecoveryToolExecution execution =
      recoverytool::RecoveryTool::execute(arguments, credentialReader);
  // A failure to write the program's output is dropped: there is no one left to tell.
  if (!execution.standardOutput.empty()) (void)platform::Files::writeAll(STDOUT_FILENO, execution.standardOutput);
  if (!execution.standardError.empty()) (void)platform::Files::writeAll(STDERR_FILENO, execution.standardError);
  return execution.exitCode;
}
