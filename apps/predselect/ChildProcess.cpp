#include "apps/predselect/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

extern char** environ;

namespace PredSelectApp {

namespace {

// The signals as they were to this program when it started.
void HearSignals(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigset_t ignored;
  sigemptyset(&none);
  sigemptyset(&ignored);
  sigaddset(&ignored, SIGPIPE);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &ignored);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

// `input` becomes the program's standard input.
std::optional<pid_t> Spawn(const std::vector<std::string>& command, int input, ChildOutput output) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  if (output == ChildOutput::kShown) {
    HearSignals(attributes);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  pid_t child = 0;
  const int failure =
      posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return failure == 0 ? std::optional(child) : std::nullopt;
}

// A program that stops reading says why by its exit code.
void WriteAll(int pipe, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t n = write(pipe, text.data() + written, text.size() - written);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;
    written += static_cast<std::size_t>(n);
  }
}

}  // namespace

bool StartChild(const std::vector<std::string>& command) {
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const std::optional<pid_t> child = Spawn(command, nothing, ChildOutput::kLost);
  close(nothing);
  return child.has_value();
}

int RunChild(const std::vector<std::string>& command, const std::string& input,
             ChildOutput output) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  const std::optional<pid_t> child = Spawn(command, ends[0], output);
  close(ends[0]);
  if (child) WriteAll(ends[1], input);
  close(ends[1]);
  int status = 0;
  if (!child) return -1;
  while (waitpid(*child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace PredSelectApp
