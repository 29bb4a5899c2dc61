#include "bench/child_process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace obolo::bench {

std::optional<std::string> RunToEnd(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return std::nullopt;
  std::vector<char*> argv;
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  int out[2];
  if (pipe(out) != 0) return std::nullopt;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  posix_spawn_file_actions_addclose(&actions, out[1]);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  std::string printed;
  if (spawned == 0) {
    char buffer[256];
    ssize_t count = 0;
    while ((count = read(out[0], buffer, sizeof buffer)) > 0) printed.append(buffer, static_cast<size_t>(count));
  }
  close(out[0]);
  if (spawned != 0) return std::nullopt;
  int status = 0;
  if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return printed;
}

}  // namespace obolo::bench
