#pragma once
// ProgramRunner runs a built program of the project as a child process with empty
// standard input and collects its exit status and both outputs, so a suite can check what a
// user of the program would see.

#include <string>
#include <vector>

namespace galdrine::testsupport {

struct ProgramOutcome {
  int exitStatus = -1;  // -1 when the program could not be started or did not exit normally
  std::string standardOutput;
  std::string standardError;
};

namespace ProgramRunner {

[[nodiscard]] ProgramOutcome run(const std::string& executable, const std::vector<std::string>& arguments);

}  // namespace ProgramRunner

}  // namespace galdrine::testsupport
