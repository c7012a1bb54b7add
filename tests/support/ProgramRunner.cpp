#include "support/ProgramRunner.hpp"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;

namespace galdrine::testsupport {

namespace {

int emptyMemoryFile() { return ::memfd_create("galdrine-program-run", MFD_CLOEXEC); }

std::string contentsOf(int descriptor) {
  std::string contents;
  ::lseek(descriptor, 0, SEEK_SET);
  char chunk[4096];
  ssize_t count = 0;
  while ((count = ::read(descriptor, chunk, sizeof chunk)) > 0) contents.append(chunk, static_cast<std::size_t>(count));
  return contents;
}

int exitStatusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

namespace ProgramRunner {

ProgramOutcome run(const std::string& executable, const std::vector<std::string>& arguments) {
  ProgramOutcome outcome;
  const int descriptors[] = {emptyMemoryFile(), emptyMemoryFile(), emptyMemoryFile()};
  std::vector<char*> argv{const_cast<char*>(executable.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  for (int stream = 0; stream < 3; ++stream) ::posix_spawn_file_actions_adddup2(&actions, descriptors[stream], stream);
  pid_t child = -1;
  if (descriptors[0] >= 0 && descriptors[1] >= 0 && descriptors[2] >= 0 &&
      ::posix_spawn(&child, executable.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
    outcome.exitStatus = exitStatusOf(child);
    outcome.standardOutput = contentsOf(descriptors[1]);
    outcome.standardError = contentsOf(descriptors[2]);
  }
  ::posix_spawn_file_actions_destroy(&actions);
  for (const int descriptor : descriptors) {
    if (descriptor >= 0) ::close(descriptor);
  }
  return outcome;
}

}  // namespace ProgramRunner

}  // namespace galdrine::testsupport
