#include "apps/predselect/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

extern char** environ;

namespace PredSelectApp {

namespace {

// `input` becomes the program's standard input.
std::optional<pid_t> Spawn(const std::vector<std::string>& command, int input) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failure =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
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
  const std::optional<pid_t> child = Spawn(command, nothing);
  close(nothing);
  return child.has_value();
}

int RunChild(const std::vector<std::string>& command, const std::string& input) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  const std::optional<pid_t> child = Spawn(command, ends[0]);
  close(ends[0]);
  if (child) WriteAll(ends[1], input);
  close(ends[1]);
  int status = 0;
  if (!child) return -1;
  while (waitpid(*child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace PredSelectApp
