// The default preference store: one SQLite database file, with the values the
// file has not taken yet kept in memory.
//
// While the file accepts writes, each write is its own transaction, committed
// with a full sync before the call returns, and the file alone then holds it
// (a rollback journal, no -wal side file): a write survives a crash, and a copy
// of the documented file is a whole session. SQLite's journal makes each key
// hold either its old or its new value after a crash mid-write. Several
// processes may share the file; a key this store has no write pending for is
// read from the file each time, so another process's committed writes are seen.
//
// When the file refuses (another process holds it, it is read-only, the disk
// is full, an I/O error, a damaged page, not a database yet, cannot be opened):
// - a write still takes effect for this process at once: it is kept in memory,
//   every later read of its key sees it, and it is written out by the store's
//   retry thread, the latest value of each key, removals included, in one
//   transaction, as soon as the file accepts writes again. The thread tries
//   10 ms after the refusal, then at doubling intervals up to 250 ms while
//   another process holds the file and up to 2 s for the other causes, which
//   wait for someone to act. What it writes wins over what another process
//   wrote to the same keys meanwhile. A write still pending when the process
//   ends is lost.
// - a read answers from memory: the last value this process wrote or read
//   for the key, none when it knows of none.
// - one line goes through the log seam when the file starts refusing, and no
//   more until it has taken every pending write (one line per episode).
// - a file that could not be opened is tried again until it can be and then
//   taken up, with the writes made meanwhile applied on top of it: a key
//   written in memory meanwhile wins over the file's older value.
// A file that cannot be used is never deleted, recreated or overwritten.
//
// Write groups: while a group is open (on any thread), writes are kept in
// memory like refused ones, and the retry thread leaves the file alone; when
// the last open group ends, everything pending goes to the file in one
// transaction and one sync. A write another thread makes meanwhile therefore
// becomes durable with the group, a few microseconds later than alone.
//
// Waiting: a call waits at most kLockBudget for a lock another process holds
// (then it goes on from memory); while the file is refusing, calls do not wait
// for it at all. The retry thread never waits for a lock, and holds the
// store's own lock only for the time of one attempt, so no caller waits on it
// for a held file. A full sync of the file on a successful write comes on top.
//
// Thread-safety: every operation may be called from any thread.

#ifndef OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_
#define OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_

#include <chrono>
#include <memory>
#include <string>

#include "platform/preference_store.h"

namespace obolo {

class SqlitePreferenceStore final : public PreferenceStore {
 public:
  // The longest a call waits for a lock another process holds on the file.
  static constexpr std::chrono::milliseconds kLockBudget{5};

  // Opens (creating when needed, with its directory) the database at `path`;
  // when the file refuses, the store starts in memory and takes the file up
  // later (see above). An empty path or ":memory:" gives a store that lives in
  // memory only. `vfs` names the SQLite VFS to open the file with (tests
  // inject faults through one); empty for SQLite's default.
  explicit SqlitePreferenceStore(const std::string& path, const std::string& vfs = "");
  // Tries once more to write what is pending; what the file still refuses is
  // lost, with one line through the log seam.
  ~SqlitePreferenceStore() override;

  SqlitePreferenceStore(const SqlitePreferenceStore&) = delete;
  SqlitePreferenceStore& operator=(const SqlitePreferenceStore&) = delete;

  std::optional<PreferenceValue> object(std::string_view key) const override;
  void set(std::string_view key, const PreferenceValue& value) override;
  void removeObject(std::string_view key) override;
  void beginWriteGroup() override;
  void endWriteGroup() override;

  // True while the file is open as this store's database (it may still refuse
  // writes); false for a store in memory only and for a file not taken up yet.
  bool isPersistent() const;
  // True while some write has not reached the file.
  bool hasPendingWrites() const;

 private:
  class Core;  // the file, what is known in memory, the retry thread
  const std::unique_ptr<Core> core_;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_SQLITE_PREFERENCE_STORE_H_
