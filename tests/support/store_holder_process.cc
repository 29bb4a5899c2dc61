#include "support/store_holder_process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace obolo::testing {

StoreHolderProcess::StoreHolderProcess(const std::string& program, const std::string& path, Hold hold) {
  int in[2];
  int out[2];
  if (pipe(in) != 0) {
    error_ = "no pipe";
    return;
  }
  if (pipe(out) != 0) {
    close(in[0]);
    close(in[1]);
    error_ = "no pipe";
    return;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addclose(&actions, in[1]);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  std::string arguments[] = {program, path, hold == Hold::kExclusive ? "exclusive" : "immediate"};
  char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
  const int rc = posix_spawn(&pid_, argv[0], &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  to_ = fdopen(in[1], "w");
  from_ = fdopen(out[0], "r");
  if (rc != 0) {
    pid_ = -1;
    error_ = "cannot start " + program;
    return;
  }
  const std::string answer = ReadLine();
  held_ = answer == "held";
  if (!held_) error_ = answer.empty() ? "the holder ended without the lock" : answer;
}

StoreHolderProcess::~StoreHolderProcess() {
  if (pid_ > 0) release(/*commit=*/false);
  if (to_ != nullptr) fclose(to_);
  if (from_ != nullptr) fclose(from_);
}

std::string StoreHolderProcess::ReadLine() {
  char buffer[512];
  if (from_ == nullptr || fgets(buffer, sizeof buffer, from_) == nullptr) return "";
  std::string line(buffer);
  while (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

bool StoreHolderProcess::set(const std::string& key, const std::string& text) {
  if (pid_ <= 0 || to_ == nullptr) return false;
  std::fprintf(to_, "set %s %s\n", key.c_str(), text.c_str());
  std::fflush(to_);
  return ReadLine() == "done";
}

bool StoreHolderProcess::release(bool commit) {
  if (pid_ <= 0) return false;
  if (to_ != nullptr) {
    std::fprintf(to_, "%s\n", commit ? "commit" : "rollback");
    std::fflush(to_);
  }
  int status = 0;
  const bool waited = waitpid(pid_, &status, 0) == pid_;
  pid_ = -1;
  held_ = false;
  return waited && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace obolo::testing
