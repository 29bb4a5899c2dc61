#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <filesystem>
#include <map>
#include <cstdio>
#include <string>
#include <vector>

#include "entry/global_variable.h"
#include "entry/obolo.h"
#include "entry/user_default_key.h"
#include "support/log_capture.h"
#include "support/temporary_store.h"

namespace obolo {
namespace {

using testing::LogCapture;
using testing::TemporaryStore;

// Records the order of removals while storing in memory.
class RecordingStore final : public PreferenceStore {
 public:
  std::optional<PreferenceValue> object(std::string_view key) const override {
    auto it = values.find(std::string(key));
    if (it == values.end()) return std::nullopt;
    return it->second;
  }
  void set(std::string_view key, const PreferenceValue& value) override { values[std::string(key)] = value; }
  void removeObject(std::string_view key) override {
    removed.emplace_back(key);
    values.erase(std::string(key));
  }

  std::map<std::string, PreferenceValue> values;
  std::vector<std::string> removed;
};

class SessionStoreTest : public ::testing::Test {
 protected:
  TemporaryStore store_;
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(SessionStoreTest, FreshInstallationHasNoSession) {
  EXPECT_EQ(global_.getAccessToken(), "");
  EXPECT_EQ(global_.getRefreshToken(), "");
  EXPECT_EQ(global_.getDeviceKey(), "");
  EXPECT_EQ(global_.getEmail(), "");
  EXPECT_EQ(global_.getCustomerId(), 0);
  EXPECT_FALSE(global_.isOBTokenExist());
}

TEST_F(SessionStoreTest, SessionIsStoredUnderItsFixedKeyNamesAndKinds) {
  global_.setDeviceKey("dk");
  global_.setAccessToken("at");
  global_.setRefreshToken("rt");
  global_.setEmail("reader@example.com");
  global_.setCustomerId(-42);
  const PreferenceStore& raw = store_.store();
  EXPECT_EQ(raw.object("deviceKey"), PreferenceValue(std::string("dk")));
  EXPECT_EQ(raw.object("accessToken"), PreferenceValue(std::string("at")));
  EXPECT_EQ(raw.object("refreshToken"), PreferenceValue(std::string("rt")));
  EXPECT_EQ(raw.object("email"), PreferenceValue(std::string("reader@example.com")));
  EXPECT_EQ(raw.object("customerId"), PreferenceValue(std::int64_t{-42}));
  EXPECT_EQ(global_.getCustomerId(), -42);
  EXPECT_TRUE(global_.isOBTokenExist());
}

TEST_F(SessionStoreTest, SettingTheAccessTokenLogsItAsACredential) {
  LogCapture log;
  global_.setAccessToken("eyJ.token");
  ASSERT_EQ(log.entries().size(), 1u);
  EXPECT_EQ(log.entries()[0].text, "eyJ.token");
  EXPECT_EQ(log.entries()[0].content, LogContent::kCredential);
}

TEST_F(SessionStoreTest, EmptyAccessTokenMeansNoSession) {
  global_.setAccessToken("");
  EXPECT_FALSE(global_.isOBTokenExist());
}

TEST_F(SessionStoreTest, ValuesOfAnotherKindReadAsTheStoreReadsThem) {
  // A host that wrote its own values under the kit's key names.
  store_.store().set("email", std::int64_t{5});
  store_.store().set("accessToken", true);
  store_.store().set("customerId", std::string("12"));
  EXPECT_EQ(global_.getEmail(), "");
  EXPECT_FALSE(global_.isOBTokenExist());
  EXPECT_EQ(global_.getCustomerId(), 12);

  store_.store().set("customerId", 7.9);
  EXPECT_EQ(global_.getCustomerId(), 7);
  store_.store().set("customerId", std::string("reader"));
  EXPECT_EQ(global_.getCustomerId(), 0);
}

TEST_F(SessionStoreTest, LogoutRemovesTheFiveKeysInOrderAndNothingElse) {
  auto recording = std::make_shared<RecordingStore>();
  PreferenceStore::setStandard(recording);
  Obolo obolo("key", "news", "logo", "article", "reader", "news.example");
  global_.setPublisherId(7);
  recording->set("hostSetting", std::string("keep me"));
  global_.setDeviceKey("dk");
  global_.setAccessToken("at");
  global_.setRefreshToken("rt");
  global_.setEmail("e");
  global_.setCustomerId(3);

  global_.logout();

  EXPECT_EQ(recording->removed,
            (std::vector<std::string>{"deviceKey", "accessToken", "refreshToken", "customerId", "email"}));
  EXPECT_EQ(recording->values.size(), 1u);
  EXPECT_EQ(recording->object("hostSetting"), PreferenceValue(std::string("keep me")));
  EXPECT_FALSE(global_.isOBTokenExist());
  EXPECT_EQ(global_.accessKey(), "key");
  EXPECT_EQ(global_.publisherId(), 7);
}

TEST(UserDefaultKeyTest, OnlyTheExactNamesMakeAKey) {
  for (auto key : {UserDefaultKey::deviceKey, UserDefaultKey::accessToken, UserDefaultKey::refreshToken,
                   UserDefaultKey::email, UserDefaultKey::customerId}) {
    EXPECT_EQ(UserDefaultKeyFromRawValue(rawValue(key)), key);
  }
  EXPECT_EQ(UserDefaultKeyFromRawValue("AccessToken"), std::nullopt);
  EXPECT_EQ(UserDefaultKeyFromRawValue("email "), std::nullopt);
  EXPECT_EQ(UserDefaultKeyFromRawValue(""), std::nullopt);
}

TEST(UserDefaultKeyTest, TypedReadsFallBackToTheirDefaults) {
  TemporaryStore store;
  UserDefaults defaults = UserDefaults::standard();
  defaults.set(true, UserDefaultKey::email);
  EXPECT_TRUE(defaults.boolean(UserDefaultKey::email));
  EXPECT_EQ(defaults.string(UserDefaultKey::email, "fallback"), "fallback");
  EXPECT_EQ(defaults.integer(UserDefaultKey::email, 9), 9);
  EXPECT_FALSE(defaults.boolean(UserDefaultKey::deviceKey));
  defaults.removeObject(UserDefaultKey::email);
  EXPECT_EQ(defaults.object(UserDefaultKey::email), std::nullopt);
}

// Runs the session tool and returns its standard output.
std::string RunSessionTool(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  std::string tool = OBOLO_SESSION_TOOL;
  argv.push_back(tool.data());
  std::vector<std::string> copies = arguments;
  for (auto& argument : copies) argv.push_back(argument.data());
  argv.push_back(nullptr);

  int pipe_fds[2];
  if (pipe(pipe_fds) != 0) return "pipe failed";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipe_fds[1], 1);
  posix_spawn_file_actions_addclose(&actions, pipe_fds[0]);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipe_fds[1]);
  std::string output;
  std::array<char, 256> buffer;
  ssize_t n = 0;
  while ((n = read(pipe_fds[0], buffer.data(), buffer.size())) > 0) output.append(buffer.data(), static_cast<size_t>(n));
  close(pipe_fds[0]);
  if (spawned != 0) return "spawn failed";
  int status = 0;
  waitpid(pid, &status, 0);
  return output;
}

TEST(SessionPersistenceTest, SessionWrittenByOneProcessIsReadByAFreshOne) {
  const std::string directory = testing::MakeTemporaryDirectory();
  const std::string path = directory + "/preferences.sqlite3";
  RunSessionTool({path, "write", "device-1", "access-1", "refresh-1", "reader@example.com", "42"});
  EXPECT_EQ(RunSessionTool({path, "read"}),
            "deviceKey=device-1\naccessToken=access-1\nrefreshToken=refresh-1\n"
            "email=reader@example.com\ncustomerId=42\n");
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace obolo
