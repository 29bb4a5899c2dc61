#include "platform/sqlite_preference_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/log.h"
#include "platform/sqlite_preference_file.h"

namespace obolo {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kNoWait{0};
// The retry thread's first wait after a refusal, doubled after each refused
// attempt up to a cap: a lock another process holds is usually let go soon,
// so the file is taken up within a quarter of a second of its release; the
// other causes (read-only, full, damaged) wait for someone to act, and an
// attempt every two seconds costs nothing worth saving.
constexpr milliseconds kFirstRetry{10};
constexpr milliseconds kContendedRetryCap{250};
constexpr milliseconds kRetryCap{2000};

}  // namespace

class SqlitePreferenceStore::Core {
 public:
  Core(const std::string& path, const std::string& vfs)
      : path_(path), in_memory_(path.empty() || path == ":memory:"), file_(path, vfs) {
    if (in_memory_) return;
    std::string line;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      const int rc = file_.open(SqlitePreferenceStore::kLockBudget);
      if (rc != SQLITE_OK) {
        line = Refused("opening", rc, /*writing=*/false);
        EnsureRetryThread();
      }
    }
    Log(line);
  }

  ~Core() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    if (retry_.joinable()) retry_.join();
    std::string line;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (!pending_.empty()) Attempt(SqlitePreferenceStore::kLockBudget);
      if (!pending_.empty()) {
        line = "Preference store " + path_ + ": " + std::to_string(pending_.size()) +
               " values the file refused are lost with this store";
      }
    }
    Log(line);
  }

  std::optional<PreferenceValue> Read(std::string_view key) {
    std::string line;
    std::optional<PreferenceValue> value;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (!in_memory_ && file_.isOpen() && pending_.find(key) == pending_.end()) {
        // While the file refuses, a read does not wait for it.
        const int rc = file_.read(key, value, refusing_ ? kNoWait : SqlitePreferenceStore::kLockBudget);
        if (rc == SQLITE_OK) {
          known_.insert_or_assign(std::string(key), value);
          if (refusing_ && pending_.empty() && !reopen_) refusing_ = false;
          return value;
        }
        line = Refused("reading", rc, /*writing=*/false);
      }
      const auto it = known_.find(key);
      value = it == known_.end() ? std::nullopt : it->second;
    }
    Log(line);
    return value;
  }

  void Write(std::string_view key, std::optional<PreferenceValue> value) {
    std::string line;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      known_.insert_or_assign(std::string(key), std::move(value));
      if (in_memory_) return;
      pending_.emplace(key);
      if (!groups_.empty()) return;  // written when the last group ends
      line = WritePending();
    }
    Log(line);
  }

  void BeginGroup() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (in_memory_) return;
    ++groups_[std::this_thread::get_id()];
  }

  void EndGroup() {
    std::string line;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      const auto group = groups_.find(std::this_thread::get_id());
      if (group == groups_.end()) return;  // none open on this thread
      if (--group->second > 0) return;
      groups_.erase(group);
      if (!groups_.empty() || pending_.empty()) return;
      line = WritePending();
    }
    Log(line);
  }

  bool IsOpen() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return file_.isOpen();
  }

  bool HasPending() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return !pending_.empty();
  }

 private:
  // Lines go out after mutex_ is let go: a log sink may itself use the store.
  static void Log(const std::string& line) {
    if (!line.empty()) LogLine(line);
  }

  // Records a refusal; the line to log when it starts an episode, else "".
  // REQUIRES: mutex_ held.
  std::string Refused(const char* what, int code, bool writing) {
    // A refused write may need a fresh connection (a file opened read-only
    // stays so); a contended lock only needs time.
    if (writing && !SqlitePreferenceFile::IsContention(code)) reopen_ = true;
    if (refusing_) return "";
    refusing_ = true;
    return "Preference store " + path_ + ": " + what + " refused (" + SqlitePreferenceFile::Describe(code) +
           "); the session is kept in memory and written to the file once it accepts it";
  }

  // Writes what is pending to the file now, or leaves it to the retry thread
  // while the file is refusing. Returns the line to log ("" for none).
  // REQUIRES: mutex_ held.
  std::string WritePending() {
    if (!refusing_ && !reopen_ && file_.isOpen()) {
      const int rc = Flush(SqlitePreferenceStore::kLockBudget);
      if (rc == SQLITE_OK) return "";
      const std::string line = Refused("writing", rc, /*writing=*/true);
      EnsureRetryThread();
      wake_.notify_all();
      return line;
    }
    // The retry thread writes it with the others, in one transaction.
    EnsureRetryThread();
    wake_.notify_all();
    return "";
  }

  // Writes every pending key's latest value in one transaction.
  // REQUIRES: mutex_ held, file_ open.
  int Flush(milliseconds budget) {
    if (pending_.empty()) return SQLITE_OK;
    std::vector<SqlitePreferenceFile::Write> writes;
    writes.reserve(pending_.size());
    for (const std::string& key : pending_) writes.emplace_back(key, &known_.find(key)->second);
    const int rc = file_.write(writes, budget);
    if (rc == SQLITE_OK) pending_.clear();
    return rc;
  }

  // Opens the file when needed, then writes what is pending. The episode ends
  // when both succeed. REQUIRES: mutex_ held.
  int Attempt(milliseconds budget) {
    if (!file_.isOpen() || reopen_) {
      const int rc = file_.open(budget);
      if (rc != SQLITE_OK) return rc;
      reopen_ = false;
    }
    const int rc = Flush(budget);
    if (rc != SQLITE_OK) {
      if (!SqlitePreferenceFile::IsContention(rc)) reopen_ = true;
      return rc;
    }
    refusing_ = false;
    return SQLITE_OK;
  }

  // Nothing is done while a write group is open, so the file never takes
  // part of one. REQUIRES: mutex_ held.
  bool HasWork() const { return groups_.empty() && (!file_.isOpen() || reopen_ || !pending_.empty()); }

  // REQUIRES: mutex_ held.
  void EnsureRetryThread() {
    if (retry_.joinable()) return;
    try {
      retry_ = std::thread([this] { RetryLoop(); });
    } catch (const std::system_error&) {
      // No thread to be had: the next refused call tries again to start one.
    }
  }

  // Never waits for a lock, and holds mutex_ only for one attempt at a time,
  // so callers never wait on it for a held file.
  void RetryLoop() {
    std::unique_lock<std::mutex> lock(mutex_);
    milliseconds delay = kFirstRetry;
    while (!stop_) {
      if (!HasWork()) {
        delay = kFirstRetry;
        wake_.wait(lock, [this] { return stop_ || HasWork(); });
        continue;
      }
      if (wake_.wait_for(lock, delay, [this] { return stop_; })) break;
      if (!HasWork()) continue;
      const int rc = Attempt(kNoWait);
      if (rc == SQLITE_OK) {
        delay = kFirstRetry;
      } else {
        delay = std::min(delay * 2, SqlitePreferenceFile::IsContention(rc) ? kContendedRetryCap : kRetryCap);
      }
    }
  }

  const std::string path_;
  const bool in_memory_;

  mutable std::mutex mutex_;  // guards every field below and every use of file_
  std::condition_variable wake_;
  SqlitePreferenceFile file_;
  // The last value this process wrote or read for each key (none: absent);
  // for a key in pending_, the value the file has yet to take.
  std::map<std::string, std::optional<PreferenceValue>, std::less<>> known_;
  std::set<std::string, std::less<>> pending_;
  // The write groups open on each thread, by depth.
  std::map<std::thread::id, int> groups_;
  bool refusing_ = false;  // a failure episode is under way
  bool reopen_ = false;    // the connection must be opened afresh before the next write
  bool stop_ = false;
  std::thread retry_;  // started at the first refusal, ended by the destructor
};

SqlitePreferenceStore::SqlitePreferenceStore(const std::string& path, const std::string& vfs)
    : core_(std::make_unique<Core>(path, vfs)) {}

SqlitePreferenceStore::~SqlitePreferenceStore() = default;

std::optional<PreferenceValue> SqlitePreferenceStore::object(std::string_view key) const {
  return core_->Read(key);
}

void SqlitePreferenceStore::set(std::string_view key, const PreferenceValue& value) {
  core_->Write(key, value);
}

void SqlitePreferenceStore::removeObject(std::string_view key) { core_->Write(key, std::nullopt); }

void SqlitePreferenceStore::beginWriteGroup() { core_->BeginGroup(); }

void SqlitePreferenceStore::endWriteGroup() { core_->EndGroup(); }

bool SqlitePreferenceStore::isPersistent() const { return core_->IsOpen(); }

bool SqlitePreferenceStore::hasPendingWrites() const { return core_->HasPending(); }

}  // namespace obolo
