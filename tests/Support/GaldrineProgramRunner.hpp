#pragma once
// GaldrineProgramRunner runs a built program of the project as a child process with empty
// standard input and collects its exit status and both outputs, so a suite can check what a
// user of the program would see.

#include <string>
#include <vector>

struct GaldrineProgramOutcome {
  int exitStatus = -1;  // -1 when the program could not be started or did not exit normally
  std::string standardOutput;
  std::string standardError;
};

namespace GaldrineProgramRunner {

[[nodiscard]] GaldrineProgramOutcome run(const std::string& executable, const std::vector<std::string>& arguments);

}  // namespace GaldrineProgramRunner
