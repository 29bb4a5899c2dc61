// A process killed while it stores a session, as the kit stores a login, wakes
// up with a whole session: every key from the same login, at least the last
// one it finished, never a token beside another login's device key.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>

#include "support/temporary_store.h"

extern char** environ;

namespace obolo {
namespace {

TEST(StoreDurabilityTest, AWriterKilledMidSessionLeavesOneWholeSession) {
  const std::string directory = testing::MakeTemporaryDirectory();
  const std::string store = directory + "/preferences.sqlite3";
  const std::regex one_session(
      "deviceKey=device-([0-9]+)\naccessToken=access-\\1\nrefreshToken=refresh-\\1\n"
      "email=reader\\1@example\\.com\ncustomerId=\\1\n");
  const std::string no_session = "deviceKey=\naccessToken=\nrefreshToken=\nemail=\ncustomerId=0\n";
  // Kill the writer after a few whole rounds and then a pause that differs
  // each time, so the kill falls at different points of writing the next one
  // (a round is five writes; one synced write takes a millisecond or two).
  for (int attempt = 0; attempt < 12; ++attempt) {
    const int rounds = attempt % 4;
    const auto pause = std::chrono::microseconds(attempt * 700);
    SCOPED_TRACE("rounds " + std::to_string(rounds) + ", pause " + std::to_string(pause.count()) + " us");
    int out[2];
    ASSERT_EQ(pipe(out), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    std::string arguments[] = {OBOLO_SESSION_TOOL, store, "write-loop", "1000000"};
    char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data(),
                    nullptr};
    pid_t writer = -1;
    ASSERT_EQ(posix_spawn(&writer, argv[0], &actions, nullptr, argv, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    FILE* progress = fdopen(out[0], "r");
    char line[64];
    int read = 0;  // "ready", then one line per round
    while (read <= rounds && fgets(line, sizeof line, progress) != nullptr) ++read;
    std::this_thread::sleep_for(pause);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    fclose(progress);
    ASSERT_EQ(read, rounds + 1);

    FILE* reader = popen((std::string(OBOLO_SESSION_TOOL) + " '" + store + "' read").c_str(), "r");
    ASSERT_NE(reader, nullptr);
    std::string session;
    while (fgets(line, sizeof line, reader) != nullptr) session += line;
    EXPECT_EQ(pclose(reader), 0);
    std::smatch match;
    if (rounds == 0 && session == no_session) continue;
    ASSERT_TRUE(std::regex_match(session, match, one_session)) << session;
    // Every round the writer reported done is on disk.
    EXPECT_GE(std::stol(match[1].str()), rounds - 1) << session;
  }
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace obolo
