#pragma once
// Helpers that run code as another process: under a fresh pseudo-terminal that is its
// controlling terminal (so a hidden prompt can be answered like a person would), or as the
// built program with chosen standard input.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::testsupport {

struct PseudoTerminalRun {
  std::string terminalOutput;   // everything the child showed on the terminal
  bool promptSeen = false;      // the expected prompt appeared
  bool echoOffAtPrompt = false; // terminal echo was off while the prompt waited
  int exitStatus = -1;          // the child's exit status, or -1 if it did not exit normally
};

// runUnderPseudoTerminal runs `child` in a new session whose controlling terminal is a new
// pseudo-terminal, waits until the terminal shows `prompt`, then types `typed`. `child` ends
// the process itself (with _exit or exec). A child that never shows the prompt gets no input.
[[nodiscard]] PseudoTerminalRun runUnderPseudoTerminal(const std::function<void()>& child, std::string_view prompt,
                                                       std::string_view typed);

struct ProgramRun {
  int exitStatus = -1;
  std::string standardOutput;
  std::string standardError;
};

// runProgram runs the executable with `arguments` (without the program's name), standard
// input holding `standardInput`, and collects both outputs. With `detachTerminal` the program
// runs in a new session without a controlling terminal.
[[nodiscard]] ProgramRun runProgram(const std::string& executable, const std::vector<std::string>& arguments,
                                    std::string_view standardInput, bool detachTerminal = true);

}  // namespace galdrine::testsupport
