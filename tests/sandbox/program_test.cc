// The obolo-sandbox program as a developer runs it: it prints the exports that
// point the kit at it, serves until SIGTERM, and refuses bad options.

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "wire_client.h"

extern char** environ;

namespace obolo::sandbox::testing {
namespace {

// A child process with its standard output and error on pipes.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), OBOLO_SANDBOX_PROGRAM);
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int out[2];
    int err[2];
    if (pipe(out) != 0 || pipe(err) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addclose(&actions, err[0]);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~Program() {
    if (pid_ > 0 && !exited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (out_ >= 0) close(out_);
    if (err_ >= 0) close(err_);
  }

  bool started() const { return pid_ > 0; }

  // Reads standard output until a line contains `text` or the deadline passes.
  bool readUntil(const std::string& text, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (output_.find(text) == std::string::npos) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      if (left.count() <= 0) return false;
      pollfd ready{out_, POLLIN, 0};
      if (poll(&ready, 1, static_cast<int>(left.count())) <= 0) return false;
      char buffer[4096];
      const ssize_t got = read(out_, buffer, sizeof buffer);
      if (got <= 0) return false;
      output_.append(buffer, static_cast<std::size_t>(got));
    }
    return true;
  }

  // Reads all standard error, then waits for the exit; the exit code, or -1.
  int wait(std::string* error_text = nullptr) {
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = read(err_, buffer, sizeof buffer)) > 0;)
      text.append(buffer, static_cast<std::size_t>(got));
    if (error_text) *error_text = text;
    int status = 0;
    if (waitpid(pid_, &status, 0) != pid_) return -1;
    exited_ = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  void signal(int number) { kill(pid_, number); }
  const std::string& output() const { return output_; }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
  bool exited_ = false;
  std::string output_;
};

std::map<std::string, std::string> Exports(const std::string& output) {
  std::map<std::string, std::string> exports;
  std::size_t at = 0;
  while ((at = output.find("export ", at)) != std::string::npos) {
    const std::size_t equals = output.find('=', at);
    const std::size_t end = output.find('\n', at);
    if (equals == std::string::npos || end == std::string::npos) break;
    exports[output.substr(at + 7, equals - at - 7)] = output.substr(equals + 1, end - equals - 1);
    at = end;
  }
  return exports;
}

TEST(ProgramTest, PrintsTheKitsExportsServesAndStopsOnSigterm) {
  Program program({"--port", "0"});
  ASSERT_TRUE(program.started());
  ASSERT_TRUE(program.readUntil("Stop with Ctrl-C", std::chrono::seconds(30))) << program.output();

  auto exports = Exports(program.output());
  const std::string base = exports["OBOLO_API_BASE_URL"];
  EXPECT_EQ(base.rfind("https://127.0.0.1:", 0), 0u) << base;
  EXPECT_EQ(exports["OBOLO_WALLET_ORIGIN"], base);
  EXPECT_EQ(exports["OBOLO_REDIRECT_ORIGIN"], base);
  EXPECT_EQ(exports["OBOLO_LOGIN_LOGO_URL"], base + "/assets/publisher-logo.png");
  const std::string ca_file = exports["OBOLO_CA_FILE"];
  ASSERT_TRUE(std::filesystem::exists(ca_file)) << ca_file;
  for (const char* seeded : {"demo-access-key", "news.example", "reader@example.com",
                             "https://news.example/politics/city-budget-vote"}) {
    EXPECT_NE(program.output().find(seeded), std::string::npos) << seeded;
  }

  WireRequest request;
  request.method = "GET";
  request.url = exports["OBOLO_LOGIN_LOGO_URL"];
  request.caFile = ca_file;
  EXPECT_EQ(Send(request).status, 200);

  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(ca_file));
}

TEST(ProgramTest, BadOptionsExitWithCodeTwoAndTheUsage) {
  for (std::vector<std::string> arguments : {std::vector<std::string>{"--port"},
                                             {"--port", "abc"},
                                             {"--bogus"},
                                             {"--access-token-lifetime", "x"}}) {
    Program program(arguments);
    ASSERT_TRUE(program.started());
    std::string error_text;
    EXPECT_EQ(program.wait(&error_text), 2) << arguments[0];
    EXPECT_NE(error_text.find("Usage:"), std::string::npos) << error_text;
    EXPECT_NE(error_text.find(arguments[0]), std::string::npos) << error_text;
  }
}

}  // namespace
}  // namespace obolo::sandbox::testing
