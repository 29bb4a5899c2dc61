#include "platform/sqlite_preference_store.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/log_capture.h"
#include "support/store_files.h"
#include "support/temporary_store.h"

namespace obolo {
namespace {

class SqlitePreferenceStoreTest : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove_all(directory_); }
  std::string directory_ = testing::MakeTemporaryDirectory();
  std::string path_ = directory_ + "/nested/dir/preferences.sqlite3";
};

TEST_F(SqlitePreferenceStoreTest, ValuesKeepTheirKindAcrossReopening) {
  const std::string with_nul("reader\0with nul", 15);
  {
    SqlitePreferenceStore store(path_);
    ASSERT_TRUE(store.isPersistent());
    store.set("flag", true);
    store.set("count", std::int64_t{-7});
    store.set("ratio", 0.25);
    store.set("name", with_nul);
    store.set("replaced", std::string("first"));
    store.set("replaced", std::int64_t{2});
    store.set("gone", std::string("x"));
    store.removeObject("gone");
  }
  SqlitePreferenceStore reopened(path_);
  EXPECT_EQ(reopened.object("flag"), PreferenceValue(true));
  EXPECT_EQ(reopened.object("count"), PreferenceValue(std::int64_t{-7}));
  EXPECT_EQ(reopened.object("ratio"), PreferenceValue(0.25));
  EXPECT_EQ(reopened.object("name"), PreferenceValue(with_nul));
  EXPECT_EQ(reopened.object("replaced"), PreferenceValue(std::int64_t{2}));
  EXPECT_EQ(reopened.object("gone"), std::nullopt);
}

TEST_F(SqlitePreferenceStoreTest, AFileThatIsNotADatabaseIsLeftAloneAndTheStoreStillWorks) {
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
  const std::string garbage = "this is the host's file, not a database";
  std::ofstream(path_) << garbage;
  testing::LogCapture log;

  SqlitePreferenceStore store(path_);
  EXPECT_FALSE(store.isPersistent());
  store.set("accessToken", std::string("t"));
  EXPECT_EQ(store.object("accessToken"), PreferenceValue(std::string("t")));
  std::ifstream file(path_);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), garbage);
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST_F(SqlitePreferenceStoreTest, AFileThatIsNotADatabaseYetIsTakenUpOnceItIsOne) {
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
  std::ofstream(path_) << "a download of the file that has not finished";
  SqlitePreferenceStore store(path_);
  store.set("accessToken", std::string("written meanwhile"));
  EXPECT_FALSE(store.isPersistent());

  // The file arrives whole (a restore, a migration): a database of its own.
  const std::string arriving = directory_ + "/arriving.sqlite3";
  SqlitePreferenceStore(arriving).set("hostSetting", std::string("from the restored file"));
  std::filesystem::rename(arriving, path_);
  testing::WaitUntil([&] { return store.isPersistent() && !store.hasPendingWrites(); });

  EXPECT_EQ(store.object("hostSetting"), PreferenceValue(std::string("from the restored file")));
  const std::string copy = testing::CopyFileAlone(path_);
  EXPECT_EQ(testing::ValueInFile(copy, "accessToken"), PreferenceValue(std::string("written meanwhile")));
  EXPECT_EQ(testing::ValueInFile(copy, "hostSetting"),
            PreferenceValue(std::string("from the restored file")));
}

// A backup or a migration copies the documented file and nothing beside it.
TEST_F(SqlitePreferenceStoreTest, OnceAWriteHasReturnedTheFileAloneHoldsIt) {
  SqlitePreferenceStore store(path_);
  store.set("accessToken", std::string("access"));
  store.set("customerId", std::int64_t{42});
  store.set("email", std::string("reader@example.com"));
  store.removeObject("email");
  const std::string copy = testing::CopyFileAlone(path_);
  EXPECT_EQ(testing::ValueInFile(copy, "accessToken"), PreferenceValue(std::string("access")));
  EXPECT_EQ(testing::ValueInFile(copy, "customerId"), PreferenceValue(std::int64_t{42}));
  EXPECT_EQ(testing::ValueInFile(copy, "email"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(path_ + "-wal"));
  EXPECT_FALSE(std::filesystem::exists(path_ + "-journal"));
}

// An earlier build kept the file in WAL mode, its last values in the -wal
// side file; another process of that build may still have it open.
TEST_F(SqlitePreferenceStoreTest, AFileLeftInWalModeIsTakenUpAndMadeSelfContained) {
  for (const bool still_open_elsewhere : {true, false}) {
    SCOPED_TRACE(still_open_elsewhere ? "open elsewhere" : "closed");
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    sqlite3* earlier = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &earlier), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(earlier,
                     "PRAGMA journal_mode=WAL;"
                     "CREATE TABLE preferences (key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value)"
                     " WITHOUT ROWID;"
                     "INSERT INTO preferences VALUES ('refreshToken', 3, 'from the earlier build');",
                     nullptr, nullptr, nullptr),
        SQLITE_OK);
    if (!still_open_elsewhere) {
      // The earlier process ended without a checkpoint: the -wal alone holds the token.
      sqlite3_db_config(earlier, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
      sqlite3_close(earlier);
      earlier = nullptr;
      ASSERT_GT(std::filesystem::file_size(path_ + "-wal"), 0u);
    }

    SqlitePreferenceStore store(path_);
    EXPECT_EQ(store.object("refreshToken"), PreferenceValue(std::string("from the earlier build")));
    store.set("accessToken", std::string("access"));

    const std::string copy = testing::CopyFileAlone(path_);
    EXPECT_EQ(testing::ValueInFile(copy, "refreshToken"),
              PreferenceValue(std::string("from the earlier build")));
    EXPECT_EQ(testing::ValueInFile(copy, "accessToken"), PreferenceValue(std::string("access")));
    EXPECT_EQ(std::filesystem::exists(path_ + "-wal"), still_open_elsewhere);
    sqlite3_close(earlier);
  }
}

// A login's keys reach the file together when the group ends: before that the
// file holds the session as it was, while every read already sees each write.
TEST_F(SqlitePreferenceStoreTest, AWriteGroupReachesTheFileWholeWhenTheOutermostGroupEnds) {
  auto store = std::make_shared<SqlitePreferenceStore>(path_);
  store->set("accessToken", std::string("old access"));
  store->set("email", std::string("old@example.com"));
  const auto in_file = [&](std::string_view key) { return testing::ValueInFile(testing::CopyFileAlone(path_), key); };
  {
    const PreferenceWriteGroup login(store);
    store->set("accessToken", std::string("new access"));
    {
      const PreferenceWriteGroup nested(store);
      store->set("deviceKey", std::string("new device"));
    }
    store->removeObject("email");
    // Another thread's write waits for the group too, and reads see it.
    std::thread([&] {
      store->set("customerId", std::int64_t{7});
      EXPECT_EQ(store->object("accessToken"), PreferenceValue(std::string("new access")));
    }).join();
    EXPECT_EQ(store->object("deviceKey"), PreferenceValue(std::string("new device")));
    EXPECT_EQ(store->object("email"), std::nullopt);
    EXPECT_EQ(store->object("customerId"), PreferenceValue(std::int64_t{7}));
    EXPECT_TRUE(store->hasPendingWrites());
    EXPECT_EQ(in_file("accessToken"), PreferenceValue(std::string("old access")));
    EXPECT_EQ(in_file("deviceKey"), std::nullopt);
    EXPECT_EQ(in_file("email"), PreferenceValue(std::string("old@example.com")));
    EXPECT_EQ(in_file("customerId"), std::nullopt);
  }
  EXPECT_FALSE(store->hasPendingWrites());
  EXPECT_EQ(in_file("accessToken"), PreferenceValue(std::string("new access")));
  EXPECT_EQ(in_file("deviceKey"), PreferenceValue(std::string("new device")));
  EXPECT_EQ(in_file("email"), std::nullopt);
  EXPECT_EQ(in_file("customerId"), PreferenceValue(std::int64_t{7}));
  // Ungrouped writes are durable on their own again.
  store->set("email", std::string("later@example.com"));
  EXPECT_EQ(in_file("email"), PreferenceValue(std::string("later@example.com")));
}

TEST_F(SqlitePreferenceStoreTest, ThreadsCanWriteAndReadAtOnce) {
  SqlitePreferenceStore store(path_);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&store, t] {
      const std::string key = "key" + std::to_string(t);
      for (std::int64_t i = 0; i < 50; ++i) {
        store.set(key, i);
        ASSERT_EQ(store.object(key), PreferenceValue(i));
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(store.object("key3"), PreferenceValue(std::int64_t{49}));
}

// How the kit reads a number or a flag that a host stored as another kind.
TEST(PreferenceReadingTest, IntegerAndBooleanReadingsOfEveryKind) {
  EXPECT_EQ(IntegerReading(std::string("  -12abc")), -12);
  EXPECT_EQ(IntegerReading(std::string("99999999999999999999")), INT64_MAX);
  EXPECT_EQ(IntegerReading(std::string("abc")), 0);
  EXPECT_EQ(IntegerReading(-3.9), -3);
  EXPECT_EQ(IntegerReading(1e300), INT64_MAX);
  EXPECT_TRUE(BoolReading(std::string("YES")));
  EXPECT_TRUE(BoolReading(std::string(" 007")));
  EXPECT_FALSE(BoolReading(std::string("000")));
  EXPECT_TRUE(BoolReading(std::int64_t{-1}));
}

}  // namespace
}  // namespace obolo
