// One SQLite connection to the preference file, and nothing else: no memory of
// its own, no retries, no logging. SqlitePreferenceStore decides what to do
// when the file refuses.
//
// Every operation answers with SQLite's result code: SQLITE_OK, or the code
// with which the file refused (busy or locked by another connection, read-only,
// full, an I/O error, a damaged page, not a database, cannot be opened). A
// refused write has written nothing.
//
// Waiting: every operation takes a budget, the longest it waits for a lock
// another connection holds, after which it gives up with SQLITE_BUSY. It never
// waits longer than that on a lock; the file system's own time (a sync) comes
// on top.
//
// The file is kept in rollback-journal mode (journal_mode=DELETE), so once a
// write has committed the file alone holds every committed value: no -wal side
// file exists that a copy of the file would miss, and the -journal exists only
// while a write is under way. A file found in WAL mode (another build, another
// program) is switched back as soon as no other connection uses it.
//
// Not thread-safe: the caller serialises every call.

#ifndef OBOLO_PLATFORM_SQLITE_PREFERENCE_FILE_H_
#define OBOLO_PLATFORM_SQLITE_PREFERENCE_FILE_H_

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/preference_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace obolo {

class SqlitePreferenceFile {
 public:
  // A key and its new value; none removes the key.
  using Write = std::pair<std::string_view, const std::optional<PreferenceValue>*>;

  // `vfs` names the SQLite VFS to open the file with; empty for the default.
  SqlitePreferenceFile(std::string path, std::string vfs);
  ~SqlitePreferenceFile();
  SqlitePreferenceFile(const SqlitePreferenceFile&) = delete;
  SqlitePreferenceFile& operator=(const SqlitePreferenceFile&) = delete;

  // (Re)opens the connection: creates the file and its directory when missing,
  // the table when the file has none. A file that is not a database, or whose
  // table cannot be used, is left exactly as it is. On a refusal the
  // connection stays closed.
  int open(std::chrono::milliseconds budget);
  void close();
  bool isOpen() const { return db_ != nullptr; }

  // Reads `key` into `value` (none when absent). REQUIRES: isOpen().
  int read(std::string_view key, std::optional<PreferenceValue>& value, std::chrono::milliseconds budget);

  // Writes every entry in one transaction: all of them or, on a refusal, none.
  // REQUIRES: isOpen().
  int write(const std::vector<Write>& writes, std::chrono::milliseconds budget);

  // SQLite's text for a result code.
  static std::string Describe(int code);

  // True for the refusals that end when another connection lets go of the
  // file; the others (read-only, full, I/O error, damage) need a fresh
  // connection once the cause is gone.
  static bool IsContention(int code);

 private:
  int Prepare();
  int Step(sqlite3_stmt* statement);
  int BindValue(const PreferenceValue& value);
  int QueryText(const char* sql, std::string& text);
  int LeaveWal();
  void SwitchToRollbackJournal();
  static int BusyHandler(void* file, int attempts);

  const std::string path_;
  const std::string vfs_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* select_ = nullptr;
  sqlite3_stmt* upsert_ = nullptr;
  sqlite3_stmt* delete_ = nullptr;
  sqlite3_stmt* begin_ = nullptr;
  sqlite3_stmt* commit_ = nullptr;
  bool wal_ = false;  // the file is still in WAL mode
  std::chrono::steady_clock::time_point deadline_;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_SQLITE_PREFERENCE_FILE_H_
