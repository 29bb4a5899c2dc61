// The obolo-sandbox program as a developer runs it: it prints the exports that
// point the kit at it and serves until SIGTERM, and refuses bad options.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "wire_client.h"

extern char** environ;

namespace obolo::sandbox::testing {
namespace {

TEST(ProgramTest, PrintsTheKitsExportsServesAndStopsOnSigterm) {
  int out[2];
  ASSERT_EQ(pipe(out), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  char* argv[] = {const_cast<char*>(OBOLO_SANDBOX_PROGRAM), const_cast<char*>("--port"),
                  const_cast<char*>("0"), nullptr};
  pid_t pid = -1;
  ASSERT_EQ(posix_spawn(&pid, argv[0], &actions, nullptr, argv, environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  FILE* output = fdopen(out[0], "r");

  std::map<std::string, std::string> exports;
  std::string all;
  char line[1024];
  while (all.find("Stop with Ctrl-C") == std::string::npos && fgets(line, sizeof line, output) != nullptr) {
    all += line;
    std::string text(line);
    const auto equals = text.find('=');
    if (text.rfind("export ", 0) == 0 && equals != std::string::npos) {
      exports[text.substr(7, equals - 7)] = text.substr(equals + 1, text.find('\n') - equals - 1);
    }
  }
  const std::string base = exports["OBOLO_API_BASE_URL"];
  EXPECT_EQ(base.rfind("https://127.0.0.1:", 0), 0u) << all;
  EXPECT_EQ(exports["OBOLO_WALLET_ORIGIN"], base);
  EXPECT_EQ(exports["OBOLO_REDIRECT_ORIGIN"], base);
  EXPECT_EQ(exports["OBOLO_LOGIN_LOGO_URL"], base + kPublisherLogoPath);
  for (const char* seeded : {"demo-access-key", "news.example", "reader@example.com"}) {
    EXPECT_NE(all.find(seeded), std::string::npos) << seeded;
  }
  const std::string ca_file = exports["OBOLO_CA_FILE"];
  EXPECT_EQ(Send({.method = "GET", .url = exports["OBOLO_LOGIN_LOGO_URL"], .headers = {}, .body = {}, .caFile = ca_file})
                .status,
            200);

  kill(pid, SIGTERM);
  int status = -1;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  fclose(output);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_FALSE(std::filesystem::exists(ca_file)) << ca_file;
}

TEST(ProgramTest, ABadOptionExitsWithCodeTwoAndTheUsage) {
  FILE* program = popen(OBOLO_SANDBOX_PROGRAM " --port abc 2>&1", "r");
  ASSERT_NE(program, nullptr);
  std::string text;
  char buffer[1024];
  for (std::size_t got; (got = fread(buffer, 1, sizeof buffer, program)) > 0;) text.append(buffer, got);
  const int status = pclose(program);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
  EXPECT_NE(text.find("--port"), std::string::npos) << text;
  EXPECT_NE(text.find("Usage:"), std::string::npos) << text;
}

}  // namespace
}  // namespace obolo::sandbox::testing
