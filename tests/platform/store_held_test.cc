// Another process holds the preference file, at start-up or while the kit
// runs. The reader's session reads back at once, logout logs out, and the file
// is taken up and written as soon as the other process lets go.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "entry/global_variable.h"
#include "platform/sqlite_preference_store.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/log_capture.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/store_files.h"
#include "support/store_holder_process.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using Hold = testing::StoreHolderProcess::Hold;
using testing::NumberedSession;
using testing::StoredSession;

class StoreHeldTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The file as an earlier run left it: a session and a host's own key.
    auto store = std::make_shared<SqlitePreferenceStore>(path_);
    PreferenceStore::setStandard(store);
    testing::StoreSessionOf(NumberedSession(0));
    store->set("hostSetting", std::string("keep me"));
    PreferenceStore::setStandard(nullptr);
  }
  void TearDown() override {
    PreferenceStore::setStandard(nullptr);
    std::filesystem::remove_all(directory_);
  }

  std::string directory_ = testing::MakeTemporaryDirectory();
  std::string path_ = directory_ + "/preferences.sqlite3";
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(StoreHeldTest, AFileHeldAtStartUpIsTakenUpAsSoonAsItIsFree) {
  testing::StoreHolderProcess holder(OBOLO_STORE_HOLDER, path_, Hold::kExclusive);
  ASSERT_TRUE(holder.held()) << holder.error();
  testing::LogCapture log;
  auto store = std::make_shared<SqlitePreferenceStore>(path_);
  PreferenceStore::setStandard(store);
  EXPECT_FALSE(store->isPersistent());
  global_.setAccessToken("access-meanwhile");
  EXPECT_EQ(global_.getAccessToken(), "access-meanwhile");

  ASSERT_TRUE(holder.release(/*commit=*/false));
  testing::WaitUntil([&] { return store->isPersistent() && !store->hasPendingWrites(); });
  StoredSession expected = NumberedSession(0);
  expected.accessToken = "access-meanwhile";
  EXPECT_EQ(StoredSession::Read(), expected);
  EXPECT_EQ(testing::SessionInFile(testing::CopyFileAlone(path_)), expected);
  EXPECT_EQ(testing::StoreLines(log).size(), 1u) << ::testing::PrintToString(log.lines());
}

TEST_F(StoreHeldTest, ASessionWrittenWhileAnotherProcessHoldsTheFileReadsBackAndIsWrittenWhenItLetsGo) {
  for (const Hold hold : {Hold::kExclusive, Hold::kImmediate}) {
    SCOPED_TRACE(hold == Hold::kExclusive ? "exclusive" : "immediate");
    auto store = std::make_shared<SqlitePreferenceStore>(path_);
    PreferenceStore::setStandard(store);
    ASSERT_EQ(StoredSession::Read(), NumberedSession(0));
    ASSERT_EQ(store->object("hostSetting"), PreferenceValue(std::string("keep me")));
    testing::LogCapture log;
    {
      testing::StoreHolderProcess holder(OBOLO_STORE_HOLDER, path_, hold);
      ASSERT_TRUE(holder.held()) << holder.error();
      testing::StoreSessionOf(NumberedSession(1));
      EXPECT_EQ(StoredSession::Read(), NumberedSession(1));
      // A key with nothing pending reads from the file, or from what the
      // store last knew of it while the other process keeps readers out.
      EXPECT_EQ(store->object("hostSetting"), PreferenceValue(std::string("keep me")));
      global_.logout();
      EXPECT_TRUE(StoredSession::Read().empty());
      EXPECT_FALSE(global_.isOBTokenExist());
      EXPECT_TRUE(store->hasPendingWrites());
      ASSERT_TRUE(holder.set("otherProcessSetting", "from the other process"));
      ASSERT_TRUE(holder.release(/*commit=*/true));
    }
    testing::WaitUntil([&] { return !store->hasPendingWrites(); });

    EXPECT_TRUE(StoredSession::Read().empty());
    EXPECT_EQ(store->object("otherProcessSetting"), PreferenceValue(std::string("from the other process")));
    const std::string copy = testing::CopyFileAlone(path_);
    EXPECT_TRUE(testing::SessionInFile(copy).empty());
    EXPECT_EQ(testing::ValueInFile(copy, "hostSetting"), PreferenceValue(std::string("keep me")));
    EXPECT_EQ(testing::ValueInFile(copy, "otherProcessSetting"),
              PreferenceValue(std::string("from the other process")));
    EXPECT_EQ(testing::StoreLines(log).size(), 1u) << ::testing::PrintToString(log.lines());

    // The next run starts from that file.
    PreferenceStore::setStandard(nullptr);
    store.reset();
    PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(path_));
    testing::StoreSessionOf(NumberedSession(0));
    PreferenceStore::setStandard(nullptr);
  }
}

// The token refresh writes the session on the HTTP session's thread, and the
// logged-in bid that follows reads it back from there.
TEST(StoreHeldDuringRefreshTest, ATokenRefreshedWhileAnotherProcessHoldsTheFileIsUsedAtOnceAndStoredLater) {
  namespace seed = sandbox::seed;
  sandbox::Sandbox& sandbox = testing::SandboxEnvironment::sandbox();
  testing::TemporaryStore store;
  const auto expired =
      sandbox.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(24)).value();
  testing::StoreSession(expired);
  GlobalVariable& global = GlobalVariable::shared();
  testing::PaywallHost host(seed::kNormalArticleUrl);
  std::shared_ptr<PaywallVC> paywall;
  {
    testing::StoreHolderProcess holder(OBOLO_STORE_HOLDER, store.path(), Hold::kExclusive);
    ASSERT_TRUE(holder.held()) << holder.error();
    paywall = host.load();
    ASSERT_TRUE(host.waitFor([&] { return testing::PaywallHost::isCardShown(*paywall); }));

    const auto bids = sandbox.requestsTo(sandbox::kCreateLoggedInBidPath);
    ASSERT_EQ(bids.size(), 1u);
    EXPECT_NE(global.getAccessToken(), expired.accessToken);
    EXPECT_EQ(bids.at(0).headerExactly("Authorization"), "Bearer " + global.getAccessToken());
    EXPECT_TRUE(store.sqliteStore().hasPendingWrites());
  }
  testing::WaitUntil([&] { return !store.sqliteStore().hasPendingWrites(); });
  EXPECT_EQ(testing::SessionInFile(testing::CopyFileAlone(store.path())).accessToken,
            global.getAccessToken());
}

}  // namespace
}  // namespace obolo
