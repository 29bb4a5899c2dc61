// A preference file that refuses: full, failing, read-only, held, damaged. The
// reader's session still reads back at once, logout still logs out, and once
// the file accepts writes again it alone holds the latest session.

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "entry/global_variable.h"
#include "platform/sqlite_preference_store.h"
#include "support/faulty_vfs.h"
#include "support/log_capture.h"
#include "support/store_files.h"
#include "support/temporary_store.h"

namespace obolo {
namespace {

using testing::FileFault;
using testing::NumberedSession;
using testing::StoredSession;

class StoreRefusalTest : public ::testing::Test {
 protected:
  void TearDown() override {
    PreferenceStore::setStandard(nullptr);
    testing::InjectFileFault(FileFault::kNone);
    std::filesystem::remove_all(directory_);
  }

  // A store over the file through the fault-injecting VFS, installed as the
  // standard store, holding `session` and a host's own key on disk.
  std::shared_ptr<SqlitePreferenceStore> OpenWith(const StoredSession& session) {
    auto store = std::make_shared<SqlitePreferenceStore>(path_, testing::FaultyVfsName());
    PreferenceStore::setStandard(store);
    store->set("hostSetting", std::string("keep me"));
    if (!session.empty()) testing::StoreSessionOf(session);
    return store;
  }

  std::string directory_ = testing::MakeTemporaryDirectory();
  std::string path_ = directory_ + "/preferences.sqlite3";
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(StoreRefusalTest, ASessionWrittenWhileTheFileRefusesReadsBackAtOnceAndReachesTheFileLater) {
  const FileFault faults[] = {FileFault::kDiskFull,        FileFault::kIoError,
                              FileFault::kReadOnly,        FileFault::kHeldForWriting,
                              FileFault::kHeldExclusively, FileFault::kDamagedPages};
  for (const FileFault fault : faults) {
    for (const bool ends_logged_in : {true, false}) {
      SCOPED_TRACE(std::string(testing::FileFaultName(fault)) + (ends_logged_in ? ", login" : ", logout"));
      std::filesystem::remove(path_);
      const StoredSession before = NumberedSession(0), login = NumberedSession(1), last = NumberedSession(2);
      auto store = OpenWith(before);
      ASSERT_FALSE(store->hasPendingWrites());
      testing::LogCapture log;
      {
        testing::ScopedFileFault refusing(fault);
        testing::StoreSessionOf(login);
        EXPECT_EQ(StoredSession::Read(), login);
        global_.logout();
        EXPECT_TRUE(StoredSession::Read().empty());
        EXPECT_FALSE(global_.isOBTokenExist());
        if (ends_logged_in) {
          testing::StoreSessionOf(last);
          EXPECT_EQ(StoredSession::Read(), last);
        }
        EXPECT_TRUE(store->hasPendingWrites());
        // The file itself was refused all of it.
        EXPECT_EQ(testing::SessionInFile(testing::CopyFileAlone(path_)), before);
      }
      testing::WaitUntil([&] { return !store->hasPendingWrites(); });

      const StoredSession expected = ends_logged_in ? last : StoredSession{};
      EXPECT_EQ(StoredSession::Read(), expected);
      const std::string copy = testing::CopyFileAlone(path_);
      EXPECT_EQ(testing::SessionInFile(copy), expected);
      EXPECT_EQ(testing::ValueInFile(copy, "hostSetting"), PreferenceValue(std::string("keep me")));
      EXPECT_EQ(testing::StoreLines(log).size(), 1u) << ::testing::PrintToString(log.lines());
      PreferenceStore::setStandard(nullptr);
    }
  }
}

TEST_F(StoreRefusalTest, EachEpisodeOfRefusalsIsLoggedOnce) {
  auto store = OpenWith(NumberedSession(0));
  testing::LogCapture log;
  for (const FileFault fault : {FileFault::kDiskFull, FileFault::kHeldExclusively}) {
    {
      testing::ScopedFileFault refusing(fault);
      for (int i = 1; i <= 3; ++i) testing::StoreSessionOf(NumberedSession(i));
      global_.logout();
      for (int i = 0; i < 3; ++i) EXPECT_TRUE(StoredSession::Read().empty());
    }
    testing::WaitUntil([&] { return !store->hasPendingWrites(); });
  }
  const auto lines = testing::StoreLines(log);
  ASSERT_EQ(lines.size(), 2u) << ::testing::PrintToString(lines);
  EXPECT_NE(lines[0].find("full"), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find("locked"), std::string::npos) << lines[1];
}

TEST_F(StoreRefusalTest, AFileRefusingFromStartUpIsTakenUpWithTheWritesMadeMeanwhileOnTop) {
  for (const FileFault fault :
       {FileFault::kHeldExclusively, FileFault::kReadOnly, FileFault::kDamagedPages}) {
    SCOPED_TRACE(testing::FileFaultName(fault));
    std::filesystem::remove(path_);
    OpenWith(NumberedSession(0));
    PreferenceStore::setStandard(nullptr);

    testing::LogCapture log;
    std::shared_ptr<SqlitePreferenceStore> store;
    {
      testing::ScopedFileFault refusing(fault);
      store = std::make_shared<SqlitePreferenceStore>(path_, testing::FaultyVfsName());
      PreferenceStore::setStandard(store);
      global_.setAccessToken("access-meanwhile");
      EXPECT_EQ(global_.getAccessToken(), "access-meanwhile");
    }
    testing::WaitUntil([&] { return store->isPersistent() && !store->hasPendingWrites(); });

    // The key written meanwhile wins; the others are the file's.
    StoredSession expected = NumberedSession(0);
    expected.accessToken = "access-meanwhile";
    EXPECT_EQ(StoredSession::Read(), expected);
    EXPECT_EQ(testing::SessionInFile(testing::CopyFileAlone(path_)), expected);
    EXPECT_EQ(testing::StoreLines(log).size(), 1u) << ::testing::PrintToString(log.lines());
    PreferenceStore::setStandard(nullptr);
  }
}

TEST_F(StoreRefusalTest, ThreadsWritingWhileTheFileComesAndGoesLeaveTheLatestValueOfEachKey) {
  auto store = OpenWith({});
  testing::LogCapture log;
  constexpr int kWrites = 40;
  std::atomic<int> running{3};
  std::vector<std::thread> writers;
  for (int t = 0; t < 3; ++t) {
    writers.emplace_back([&, t] {
      const std::string key = "key" + std::to_string(t);
      for (std::int64_t i = 0; i < kWrites; ++i) {
        store->set(key, i);
        EXPECT_EQ(store->object(key), PreferenceValue(i));
        if (i % 7 == 3) {
          store->removeObject(key);
          EXPECT_EQ(store->object(key), std::nullopt);
        }
      }
      --running;
    });
  }
  // The file refuses and accepts in turn until the writers are done.
  const FileFault faults[] = {FileFault::kHeldExclusively, FileFault::kNone,
                              FileFault::kDiskFull,        FileFault::kNone,
                              FileFault::kHeldForWriting,  FileFault::kNone};
  for (int turn = 0; running > 0; ++turn) {
    testing::InjectFileFault(faults[turn % std::size(faults)]);
    std::this_thread::yield();
  }
  for (auto& writer : writers) writer.join();
  testing::InjectFileFault(FileFault::kNone);
  testing::WaitUntil([&] { return !store->hasPendingWrites(); });

  EXPECT_FALSE(testing::StoreLines(log).empty());  // the file did refuse
  const std::string copy = testing::CopyFileAlone(path_);
  for (int t = 0; t < 3; ++t) {
    EXPECT_EQ(testing::ValueInFile(copy, "key" + std::to_string(t)),
              PreferenceValue(std::int64_t{kWrites - 1}));
  }
}

TEST_F(StoreRefusalTest, ADamagedFileIsNeverOverwrittenAndTheSessionLivesOnInMemory) {
  OpenWith(NumberedSession(0));
  PreferenceStore::setStandard(nullptr);
  const auto read_file = [this] {
    std::ifstream file(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const std::string healthy = read_file();
  ASSERT_GE(healthy.size(), 8192u);
  std::string damaged = healthy;
  for (size_t i = 4096; i < 8192; ++i) damaged[i] = static_cast<char>(0xA5);  // the table's page
  std::ofstream(path_, std::ios::binary | std::ios::trunc) << damaged;

  testing::LogCapture log;
  auto store = std::make_shared<SqlitePreferenceStore>(path_);
  PreferenceStore::setStandard(store);
  testing::StoreSessionOf(NumberedSession(1));
  EXPECT_EQ(StoredSession::Read(), NumberedSession(1));
  global_.logout();
  EXPECT_TRUE(StoredSession::Read().empty());
  EXPECT_EQ(read_file(), damaged);
  EXPECT_EQ(testing::StoreLines(log).size(), 1u) << ::testing::PrintToString(log.lines());

  // Someone restores the file: the logout reaches it.
  std::ofstream(path_, std::ios::binary | std::ios::trunc) << healthy;
  testing::WaitUntil([&] { return !store->hasPendingWrites(); });
  EXPECT_TRUE(testing::SessionInFile(testing::CopyFileAlone(path_)).empty());
}

// Runs in a process of its own that, when started as root (for whom file
// permissions refuse nothing), first becomes an ordinary user. Returns what
// went wrong, empty when nothing did.
std::string ReadOnlyScenario(const std::string& directory, bool directory_read_only) {
  if (geteuid() == 0) {
    constexpr uid_t kNobody = 65534;
    if (chown(directory.c_str(), kNobody, kNobody) != 0 || setgroups(0, nullptr) != 0 ||
        setgid(kNobody) != 0 || setuid(kNobody) != 0) {
      return "cannot leave root";
    }
  }
  std::string failures;
  const auto expect = [&failures](bool ok, const char* what) {
    if (!ok) failures = failures + what + "; ";
  };
  const std::string path = directory + "/preferences.sqlite3";
  PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(path));
  testing::StoreSessionOf(NumberedSession(0));
  PreferenceStore::setStandard(nullptr);

  // The file read-only from the start, or its directory (where the journal
  // goes) made read-only while the store has the file open.
  const std::string& refusing = directory_read_only ? directory : path;
  const mode_t writable = directory_read_only ? 0700 : 0600;
  const mode_t read_only = directory_read_only ? 0500 : 0400;
  if (!directory_read_only && chmod(refusing.c_str(), read_only) != 0) return "chmod";
  testing::LogCapture log;
  auto store = std::make_shared<SqlitePreferenceStore>(path);
  PreferenceStore::setStandard(store);
  expect(StoredSession::Read() == NumberedSession(0), "the file's session reads");
  if (directory_read_only && chmod(refusing.c_str(), read_only) != 0) return "chmod";

  testing::StoreSessionOf(NumberedSession(1));
  expect(StoredSession::Read() == NumberedSession(1), "a login reads back");
  GlobalVariable::shared().logout();
  expect(StoredSession::Read().empty(), "a logout takes effect");
  testing::StoreSessionOf(NumberedSession(2));
  expect(store->hasPendingWrites(), "the file refused");
  expect(testing::StoreLines(log).size() == 1, "one line for the episode");

  if (chmod(refusing.c_str(), writable) != 0) return "chmod back";
  testing::WaitUntil([&] { return !store->hasPendingWrites(); });
  expect(StoredSession::Read() == NumberedSession(2), "the latest session reads back");
  expect(testing::SessionInFile(testing::CopyFileAlone(path)) == NumberedSession(2),
         "the file alone holds it");
  expect(testing::StoreLines(log).size() == 1, "still one line");
  PreferenceStore::setStandard(nullptr);
  return failures;
}

TEST_F(StoreRefusalTest, AReadOnlyFileOrDirectoryKeepsTheSessionUntilItIsWritableAgain) {
  for (const bool directory_read_only : {false, true}) {
    SCOPED_TRACE(directory_read_only ? "directory read-only mid-run" : "file read-only at start-up");
    const std::string directory = testing::MakeTemporaryDirectory();
    EXPECT_EXIT(
        {
          const std::string failures = ReadOnlyScenario(directory, directory_read_only);
          std::fprintf(stderr, "%s\n", failures.empty() ? "passed" : failures.c_str());
          std::_Exit(failures.empty() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "passed");
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
    std::filesystem::remove_all(directory);
  }
}

}  // namespace
}  // namespace obolo
