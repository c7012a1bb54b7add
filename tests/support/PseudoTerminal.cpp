#include "support/PseudoTerminal.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;

namespace galdrine::testsupport {

namespace {

constexpr int pollMilliseconds = 100;
constexpr int maximumIdlePolls = 200;  // a child silent this long is taken as stuck

int exitStatusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// readAvailable appends what the terminal has; false once the child side is gone.
bool readAvailable(int master, std::string& output) {
  pollfd descriptor{master, POLLIN, 0};
  for (int idle = 0; idle < maximumIdlePolls; ++idle) {
    if (::poll(&descriptor, 1, pollMilliseconds) <= 0) continue;
    char chunk[512];
    const ssize_t count = ::read(master, chunk, sizeof chunk);
    if (count <= 0) return false;  // EIO: every slave descriptor is closed
    output.append(chunk, static_cast<std::size_t>(count));
    return true;
  }
  return false;
}

int memoryFileWith(std::string_view contents) {
  const int descriptor = ::memfd_create("galdrine-test", MFD_CLOEXEC);
  if (descriptor < 0) return -1;
  if (!contents.empty() && ::write(descriptor, contents.data(), contents.size()) != static_cast<ssize_t>(contents.size())) {
    ::close(descriptor);
    return -1;
  }
  ::lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

std::string memoryFileContents(int descriptor) {
  std::string contents;
  ::lseek(descriptor, 0, SEEK_SET);
  char chunk[4096];
  ssize_t count = 0;
  while ((count = ::read(descriptor, chunk, sizeof chunk)) > 0) contents.append(chunk, static_cast<std::size_t>(count));
  return contents;
}

}  // namespace

PseudoTerminalRun runUnderPseudoTerminal(const std::function<void()>& child, std::string_view prompt, std::string_view typed) {
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

ProgramRun runProgram(const std::string& executable, const std::vector<std::string>& arguments, std::string_view standardInput,
                      bool detachTerminal) {
  ProgramRun run;
  const int input = memoryFileWith(standardInput);
  const int output = memoryFileWith({});
  const int error = memoryFileWith({});
  std::vector<char*> argv{const_cast<char*>(executable.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
  ::posix_spawnattr_init(&attributes);
  if (detachTerminal) ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  pid_t pid = -1;
  if (input >= 0 && output >= 0 && error >= 0 &&
      ::posix_spawn(&pid, executable.c_str(), &actions, &attributes, argv.data(), environ) == 0) {
    run.exitStatus = exitStatusOf(pid);
    run.standardOutput = memoryFileContents(output);
    run.standardError = memoryFileContents(error);
  }
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  for (const int descriptor : {input, output, error}) {
    if (descriptor >= 0) ::close(descriptor);
  }
  return run;
}

}  // namespace galdrine::testsupport
