// A process killed while it writes a session leaves the store readable, each
// key holding a whole value that was written to it.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/temporary_store.h"

extern char** environ;

namespace obolo {
namespace {

// A child process with its standard output on a pipe the test reads.
class Child {
 public:
  explicit Child(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int fds[2];
    if (pipe(fds) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    out_ = fdopen(fds[0], "r");
  }
  ~Child() {
    if (out_ != nullptr) fclose(out_);
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }

  // The next line of output, without its newline; empty at the end.
  std::string ReadLine() {
    char buffer[512];
    if (out_ == nullptr || fgets(buffer, sizeof buffer, out_) == nullptr) return "";
    std::string line(buffer);
    if (!line.empty() && line.back() == '\n') line.pop_back();
    return line;
  }
  std::string ReadAll() {
    std::string all;
    for (std::string line = ReadLine(); !line.empty(); line = ReadLine()) all += line + "\n";
    return all;
  }
  // Exit status, or -1 when killed by a signal.
  int Wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void Kill() {
    kill(pid_, SIGKILL);
    Wait();
  }

 private:
  pid_t pid_ = -1;
  FILE* out_ = nullptr;
};

// "<prefix><digits><suffix>": a value the writer wrote whole.
bool IsRoundValue(const std::string& value, const std::string& prefix, const std::string& suffix) {
  if (value.size() <= prefix.size() + suffix.size() || !value.starts_with(prefix) || !value.ends_with(suffix)) {
    return false;
  }
  const std::string digits = value.substr(prefix.size(), value.size() - prefix.size() - suffix.size());
  return digits.find_first_not_of("0123456789") == std::string::npos;
}

TEST(StoreDurabilityTest, AWriterKilledMidSessionLeavesWholeValues) {
  const std::string directory = testing::MakeTemporaryDirectory();
  const std::string store = directory + "/preferences.sqlite3";
  // Kill the writer after a different number of whole rounds each time, so
  // the kill falls at different points of writing the next one.
  for (int rounds : {0, 1, 3, 7, 20}) {
    SCOPED_TRACE(rounds);
    Child writer({OBOLO_SESSION_TOOL, store, "write-loop", "1000000"});
    ASSERT_EQ(writer.ReadLine(), "ready");
    for (int i = 0; i < rounds; ++i) ASSERT_FALSE(writer.ReadLine().empty());
    writer.Kill();

    Child reader({OBOLO_SESSION_TOOL, store, "read"});
    const std::string session = reader.ReadAll();
    EXPECT_EQ(reader.Wait(), 0);
    // Each key is absent (never written) or holds one round's whole value.
    const std::map<std::string, std::pair<std::string, std::string>> shapes = {
        {"deviceKey", {"device-", ""}},
        {"accessToken", {"access-", ""}},
        {"refreshToken", {"refresh-", ""}},
        {"email", {"reader", "@example.com"}},
        {"customerId", {"", ""}},
    };
    std::map<std::string, std::string> values;
    for (size_t begin = 0; begin < session.size();) {
      const size_t end = session.find('\n', begin);
      const std::string line = session.substr(begin, end - begin);
      values[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
      begin = end + 1;
    }
    ASSERT_EQ(values.size(), shapes.size()) << session;
    for (const auto& [key, shape] : shapes) {
      const std::string& value = values[key];
      if (value.empty()) continue;
      EXPECT_TRUE(IsRoundValue(value, shape.first, shape.second)) << key << "=" << value;
    }
    if (rounds > 0) {
      EXPECT_FALSE(values["deviceKey"].empty()) << session;
    }
  }
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace obolo
