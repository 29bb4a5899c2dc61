// A process killed while it writes a session leaves the store readable, each
// key holding a whole value that was written to it.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <string>

#include "support/temporary_store.h"

extern char** environ;

namespace obolo {
namespace {

TEST(StoreDurabilityTest, AWriterKilledMidSessionLeavesWholeValues) {
  const std::string directory = testing::MakeTemporaryDirectory();
  const std::string store = directory + "/preferences.sqlite3";
  // Each key is absent or holds one round's whole value.
  const std::regex whole_values(
      "deviceKey=(device-[0-9]+)?\naccessToken=(access-[0-9]+)?\nrefreshToken=(refresh-[0-9]+)?\n"
      "email=(reader[0-9]+@example\\.com)?\ncustomerId=[0-9]+\n");
  // Kill the writer after a different number of whole rounds each time, so
  // the kill falls at different points of writing the next one.
  for (int rounds : {0, 1, 3, 7, 20}) {
    SCOPED_TRACE(rounds);
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
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    fclose(progress);
    ASSERT_EQ(read, rounds + 1);

    FILE* reader = popen((std::string(OBOLO_SESSION_TOOL) + " '" + store + "' read").c_str(), "r");
    ASSERT_NE(reader, nullptr);
    std::string session;
    while (fgets(line, sizeof line, reader) != nullptr) session += line;
    EXPECT_EQ(pclose(reader), 0);
    EXPECT_TRUE(std::regex_match(session, whole_values)) << session;
    if (rounds > 0) {
      EXPECT_NE(session.find("deviceKey=device-"), std::string::npos) << session;
    }
  }
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace obolo
