// The kit's configuration and the reader's stored session: what goes where in
// the store, what survives the process, and when a token still counts.

#include "entry/global_variable.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "entry/jwt_decode.h"
#include "entry/obolo.h"
#include "support/fixed_clock.h"
#include "support/temporary_store.h"
#include "support/tokens.h"

namespace obolo {
namespace {

using testing::Base64Url;
using testing::MakeToken;
using testing::TokenExpiringAt;

TEST(ConfigurationTest, TheLatestConstructionSetsEachFieldAndLeavesThePublisherId) {
  GlobalVariable& global = GlobalVariable::shared();
  global.setPublisherId(7);
  Obolo first("key-0", "news", "logo-0", "article-0", "reader-0", "zero.example");
  // The logo address is the third argument and the article address the fourth.
  Obolo latest("key-1", "sports", "https://news.example/logo.png", "https://news.example/a/1", "reader-9",
               "news.example");
  EXPECT_EQ(global.accessKey(), "key-1");
  EXPECT_EQ(global.category(), "sports");
  EXPECT_EQ(global.logoUrl(), "https://news.example/logo.png");
  EXPECT_EQ(global.articleUrl(), "https://news.example/a/1");
  EXPECT_EQ(global.publisherCustomerId(), "reader-9");
  EXPECT_EQ(global.publisherDomain(), "news.example");
  EXPECT_EQ(global.publisherId(), 7);
}

class SessionStoreTest : public ::testing::Test {
 protected:
  testing::TemporaryStore store_;
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(SessionStoreTest, SessionIsStoredUnderItsKeyNamesAndKinds) {
  testing::StoreSession({"dk", "at", "rt", -42, "reader@example.com"});
  const PreferenceStore& raw = store_.store();
  EXPECT_EQ(raw.object("deviceKey"), PreferenceValue(std::string("dk")));
  EXPECT_EQ(raw.object("accessToken"), PreferenceValue(std::string("at")));
  EXPECT_EQ(raw.object("refreshToken"), PreferenceValue(std::string("rt")));
  EXPECT_EQ(raw.object("email"), PreferenceValue(std::string("reader@example.com")));
  EXPECT_EQ(raw.object("customerId"), PreferenceValue(std::int64_t{-42}));
  // A host that wrote a number under the kit's "email" key.
  store_.store().set("email", std::int64_t{5});
  EXPECT_EQ(global_.getEmail(), "");
}

// Stores in memory and records the order of removals.
struct RecordingStore final : PreferenceStore {
  std::optional<PreferenceValue> object(std::string_view key) const override {
    auto it = values.find(std::string(key));
    return it == values.end() ? std::nullopt : std::optional(it->second);
  }
  void set(std::string_view key, const PreferenceValue& value) override { values[std::string(key)] = value; }
  void removeObject(std::string_view key) override {
    removed.emplace_back(key);
    values.erase(std::string(key));
  }
  std::map<std::string, PreferenceValue> values;
  std::vector<std::string> removed;
};

TEST_F(SessionStoreTest, LogoutRemovesTheFiveKeysInOrderAndLeavesConfigurationAndHostKeys) {
  auto recording = std::make_shared<RecordingStore>();
  PreferenceStore::setStandard(recording);
  Obolo obolo("key", "news", "logo", "article", "reader", "news.example");
  global_.setPublisherId(7);
  recording->set("hostSetting", std::string("keep me"));
  testing::StoreSession({"dk", "at", "rt", 3, "e"});

  global_.logout();
  EXPECT_EQ(recording->removed,
            (std::vector<std::string>{"deviceKey", "accessToken", "refreshToken", "customerId", "email"}));
  EXPECT_EQ(recording->values.size(), 1u);
  EXPECT_EQ(recording->object("hostSetting"), PreferenceValue(std::string("keep me")));
  EXPECT_EQ(global_.accessKey(), "key");
  EXPECT_EQ(global_.publisherId(), 7);
}

std::string RunSessionTool(const std::string& arguments) {
  std::string output;
  FILE* pipe = popen((std::string(OBOLO_SESSION_TOOL) + " " + arguments).c_str(), "r");
  char buffer[256];
  while (pipe && fgets(buffer, sizeof buffer, pipe)) output += buffer;
  if (pipe) pclose(pipe);
  return output;
}

TEST(SessionPersistenceTest, ASessionWrittenByOneProcessIsReadByAFreshOne) {
  const std::string directory = testing::MakeTemporaryDirectory();
  const std::string store = directory + "/preferences.sqlite3";
  RunSessionTool(store + " write-loop 2");
  EXPECT_EQ(RunSessionTool(store + " read"),
            "deviceKey=device-1\naccessToken=access-1\nrefreshToken=refresh-1\n"
            "email=reader1@example.com\ncustomerId=1\n");
  std::filesystem::remove_all(directory);
}

TEST_F(SessionStoreTest, AnAccessTokenNeedsOneWholeMinuteLeft) {
  constexpr std::int64_t kNow = 1'800'000'000;
  testing::ScopedFixedClock clock(kNow);
  const struct {
    std::string token;
    bool valid;
    const char* why;
  } cases[] = {
      {TokenExpiringAt(kNow + 59), false, "59 s left is 0 whole minutes"},
      {TokenExpiringAt(kNow + 60), true, "60 s left is 1 minute"},
      {TokenExpiringAt(kNow - 600), false, "expired 10 minutes ago"},
      {TokenExpiringAt(kNow * 1000), true, "milliseconds, read as seconds, lie far ahead"},
      {MakeToken(R"({"sub":"42"})"), false, "no exp"},
      {MakeToken(R"({"exp":"2000000000"})"), false, "exp as text fails the payload"},
      {"header.%%%%.signature", false, "undecodable payload"},
  };
  for (const auto& c : cases) {
    global_.setAccessToken(c.token);
    EXPECT_EQ(global_.isOBTokenValid(), c.valid) << c.why;
  }
}

TEST(JWTDecodeTest, PayloadSegmentsArePaddedByTheirLength) {
  // Payloads one byte apart give segments whose lengths leave remainders 0, 2
  // and 3 after division by 4; each decodes.
  std::set<size_t> remainders;
  for (const std::string filler : {"", "x", "xy"}) {
    const std::string segment = Base64Url(R"({"exp":1700000000,"s":")" + filler + R"("})");
    remainders.insert(segment.size() % 4);
    EXPECT_EQ(JWTDecode::shared().decodeJWTPart(segment).exp, 1700000000) << segment;
  }
  EXPECT_EQ(remainders, (std::set<size_t>{0, 2, 3}));
  // A remainder of 1 cannot be base64 and fails.
  const std::string whole = Base64Url(R"({"exp":1700000000,"a":1})");
  ASSERT_EQ(whole.size() % 4, 0u);
  EXPECT_EQ(JWTDecode::shared().decodeJWTPart(whole + "A"), TokenData{});
}

TEST(JWTDecodeTest, DateFromMillisecondsTakesSeconds) {
  EXPECT_EQ(dateFromMilliseconds(1700000000).description(), "2023-11-14 22:13:20 +0000");
}

}  // namespace
}  // namespace obolo
