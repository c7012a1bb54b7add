#include "support/ProgramRunner.hpp"

#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace galdrine::testsupport {

namespace {

int memoryFileWith(std::string_view contents) {
  const int descriptor = ::memfd_create("galdrine-program-run", MFD_CLOEXEC);
  if (descriptor >= 0 &&
      ::write(descriptor, contents.data(), contents.size()) != static_cast<ssize_t>(contents.size())) {
    ::close(descriptor);
    return -1;
  }
  ::lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

std::string contentsOf(int descriptor) {
  std::string contents;
  ::lseek(descriptor, 0, SEEK_SET);
  char chunk[4096];
  for (ssize_t count = 0; (count = ::read(descriptor, chunk, sizeof chunk)) > 0;)
    contents.append(chunk, std::size_t(count));
  return contents;
}

int exitStatusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// readAvailable appends what the terminal has; false once the child side is gone, or after
// twenty seconds of silence, which is taken as a stuck child.
bool readAvailable(int master, std::string& output) {
  pollfd descriptor{master, POLLIN, 0};
  for (int idle = 0; idle < 200; ++idle) {
    if (::poll(&descriptor, 1, 100) <= 0) continue;
    char chunk[512];
    const ssize_t count = ::read(master, chunk, sizeof chunk);
    if (count <= 0) return false;  // EIO: every slave descriptor is closed
    output.append(chunk, static_cast<std::size_t>(count));
    return true;
  }
  return false;
}

}  // namespace

namespace ProgramRunner {

ProgramOutcome run(const std::string& executable, const std::vector<std::string>& arguments,
                   std::string_view standardInput) {
  ProgramOutcome outcome;
  const int streams[] = {memoryFileWith(standardInput), memoryFileWith({}), memoryFileWith({})};
  std::vector<char*> argv{const_cast<char*>(executable.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const pid_t child = streams[0] >= 0 && streams[1] >= 0 && streams[2] >= 0 ? ::fork() : -1;
  if (child == 0) {  // only calls that are safe between fork and exec
    ::setsid();
    for (int stream = 0; stream < 3; ++stream) ::dup2(streams[stream], stream);
    ::execv(executable.c_str(), argv.data());
    ::_exit(127);
  }
  if (child > 0) {
    outcome.exitStatus = exitStatusOf(child);
    outcome.standardOutput = contentsOf(streams[1]);
    outcome.standardError = contentsOf(streams[2]);
  }
  for (const int descriptor : streams) {
    if (descriptor >= 0) ::close(descriptor);
  }
  return outcome;
}

PseudoTerminalRun runUnderPseudoTerminal(const std::function<void()>& child, std::string_view prompt,
                                         std::string_view typed) {
  PseudoTerminalRun run;
  int master = -1;
  const pid_t pid = ::forkpty(&master, nullptr, nullptr, nullptr);
  if (pid < 0) return run;
  if (pid == 0) {
    child();
    ::_exit(127);
  }
  while (!run.terminalOutput.contains(prompt) && readAvailable(master, run.terminalOutput)) {
  }
  run.promptSeen = run.terminalOutput.contains(prompt);
  if (run.promptSeen) {
    termios settings{};
    run.echoOffAtPrompt = ::tcgetattr(master, &settings) == 0 && (settings.c_lflag & ECHO) == 0;
    if (::write(master, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) run.promptSeen = false;
  }
  while (readAvailable(master, run.terminalOutput)) {
  }
  ::close(master);
  run.exitStatus = exitStatusOf(pid);
  return run;
}

}  // namespace ProgramRunner

}  // namespace galdrine::testsupport
