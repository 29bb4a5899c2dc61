// The default preference store: one SQLite database file.
//
// Each write is its own transaction, committed with a full sync before the call
// returns, so a write survives a crash; SQLite's journal makes each key hold
// either its old or its new value after a crash mid-write. Several processes
// may share the file.
//
// A file that cannot be opened or is not a database is never deleted or
// overwritten: the store then keeps its values in memory for this run and
// writes one diagnostic line. The kit goes on working; only persistence across
// restarts is lost.

#ifndef OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_
#define OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_

#include <memory>
#include <mutex>
#include <string>

#include "platform/preference_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace obolo {

class SqlitePreferenceStore final : public PreferenceStore {
 public:
  // Opens (creating when needed, with its directory) the database at `path`.
  // An empty path or ":memory:" gives a store that lives in memory only.
  explicit SqlitePreferenceStore(const std::string& path);
  ~SqlitePreferenceStore() override;

  SqlitePreferenceStore(const SqlitePreferenceStore&) = delete;
  SqlitePreferenceStore& operator=(const SqlitePreferenceStore&) = delete;

  std::optional<PreferenceValue> object(std::string_view key) const override;
  void set(std::string_view key, const PreferenceValue& value) override;
  void removeObject(std::string_view key) override;

  // False when the file could not be used and values live in memory only.
  bool isPersistent() const { return persistent_; }

 private:
  bool Open(const std::string& path);
  void Close();

  mutable std::mutex mutex_;  // one statement runs at a time on the connection
  sqlite3* db_ = nullptr;
  sqlite3_stmt* select_ = nullptr;
  sqlite3_stmt* upsert_ = nullptr;
  sqlite3_stmt* delete_ = nullptr;
  bool persistent_ = false;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_
