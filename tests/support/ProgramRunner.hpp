#pragma once
// ProgramRunner runs a built program of the project, or a piece of test code, as a child
// process, as a user would meet it: with chosen standard input and no controlling terminal,
// or under a fresh pseudo-terminal on which a hidden prompt can be answered like a person
// would.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::testsupport {

struct ProgramOutcome {
  int exitStatus = -1;  // -1 when it did not exit normally, 127 when it could not be started
  std::string standardOutput;
  std::string standardError;
};

struct PseudoTerminalRun {
  std::string terminalOutput;    // everything the child showed on the terminal
  bool promptSeen = false;       // the expected prompt appeared
  bool echoOffAtPrompt = false;  // terminal echo was off while the prompt waited
  int exitStatus = -1;           // the child's exit status, or -1 if it did not exit normally
};

namespace ProgramRunner {

// run runs `executable` with `arguments` (without the program's name) and standard input
// holding `standardInput`, in a new session without a controlling terminal, so that a program
// that would prompt fails instead of waiting.
[[nodiscard]] ProgramOutcome run(const std::string& executable, const std::vector<std::string>& arguments,
                                 std::string_view standardInput = {});

// runUnderPseudoTerminal runs `child` in a new session whose controlling terminal is a new
// pseudo-terminal, waits until the terminal shows `prompt`, then types `typed`. `child` ends
// the process itself (with _exit or exec). A child that never shows the prompt gets no input.
[[nodiscard]] PseudoTerminalRun runUnderPseudoTerminal(const std::function<void()>& child, std::string_view prompt,
                                                       std::string_view typed);

}  // namespace ProgramRunner

}  // namespace galdrine::testsupport
