// Another process holds the preference file, at start-up or while the kit
// runs. The reader's session reads back at once, logout logs out, and the file
// is taken up and written as soon as the other process lets go.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "entry/global_variable.h"
#include "platform/sqlite_preference_store.h"
#include "support/log_capture.h"
#include "support/store_files.h"
#include "support/store_holder_process.h"
#include "support/temporary_store.h"

namespace obolo {
namespace {

using Hold = testing::StoreHolderProcess::Hold;
using testing::NumberedSession;
using testing::StoredSession;

void Store(const StoredSession& s) {
  testing::StoreSession({s.deviceKey, s.accessToken, s.refreshToken, s.customerId, s.email});
}

class StoreHeldTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The file as an earlier run left it: a session and a host's own key.
    auto store = std::make_shared<SqlitePreferenceStore>(path_);
    PreferenceStore::setStandard(store);
    Store(NumberedSession(0));
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
      Store(NumberedSession(1));
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
    Store(NumberedSession(0));
    PreferenceStore::setStandard(nullptr);
  }
}

}  // namespace
}  // namespace obolo
