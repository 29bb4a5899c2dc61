// The key-value store the kit keeps the reader's session in.
//
// On a phone this is the host application's standard preference domain; here
// the default is a SQLite file (SqlitePreferenceStore). A phone binding, or a
// host with its own storage, implements this interface and installs it with
// setStandard().
//
// Contract for implementations:
// - A write takes effect for this process when the call returns: every later
//   read, from any thread, sees it. `removeObject` likewise.
// - When the storage accepts it, the write is also durable when the call
//   returns: it survives a crash or a restart.
// - When the storage refuses it (held by another process, read-only, full,
//   failing), the write is kept in memory, the refusal is logged, and the
//   latest value of each key is written out once the storage accepts writes
//   again. Until then it lives only as long as the process.
// - Writes made inside a write group (PreferenceWriteGroup) take effect for
//   this process one by one, as above, but become durable together when the
//   group ends: a crash in between keeps none of them, never some.
// - No call waits on the storage for more than a few milliseconds, and none
//   fails: a read the storage refuses answers from what the process knows.
// - A reader never sees a half-written value; every operation may be called
//   from any thread.

#ifndef OBOLO_PLATFORM_PREFERENCE_STORE_H_
#define OBOLO_PLATFORM_PREFERENCE_STORE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace obolo {

// A stored value keeps its kind: a boolean, an integer, a floating-point
// number or a text.
using PreferenceValue = std::variant<bool, std::int64_t, double, std::string>;

class PreferenceStore {
 public:
  virtual ~PreferenceStore() = default;

  // The value stored under `key`, none when the key is absent.
  virtual std::optional<PreferenceValue> object(std::string_view key) const = 0;
  // Stores `value` under `key`, replacing any earlier value of any kind.
  virtual void set(std::string_view key, const PreferenceValue& value) = 0;
  // Removes `key`; removing an absent key does nothing.
  virtual void removeObject(std::string_view key) = 0;

  // Opens and closes a write group on the calling thread (see
  // PreferenceWriteGroup, which callers use). Groups nest; the outermost one
  // counts. A store that cannot group makes each write durable on its own,
  // which is the default here.
  virtual void beginWriteGroup() {}
  virtual void endWriteGroup() {}

  // The process's standard store: the one installed with setStandard(), or
  // else a SqlitePreferenceStore at DefaultStorePath(), opened on first use.
  static std::shared_ptr<PreferenceStore> standard();
  // Installs the store that standard() returns; nullptr returns to the default.
  // Returns the store in use before (null when none had been opened yet), so
  // a caller can put it back.
  static std::shared_ptr<PreferenceStore> setStandard(std::shared_ptr<PreferenceStore> store);

  // Where the default store lives: $OBOLO_PREFERENCES_PATH when set, else
  // $XDG_DATA_HOME/obolo/preferences.sqlite3, else
  // $HOME/.local/share/obolo/preferences.sqlite3. Empty when none of these is
  // known, in which case the default store lives in memory only.
  static std::string DefaultStorePath();
};

// Makes the writes and removals this thread makes on `store` during its
// lifetime durable as one step, when it ends. A session is several keys that
// only make sense together (a token and the device it was issued to): grouped,
// a crash never leaves half of one on disk, and the storage syncs once instead
// of once per key. Reads during the group, from any thread, already see each
// write.
class PreferenceWriteGroup {
 public:
  // Opens a group on `store` for the calling thread.
  explicit PreferenceWriteGroup(std::shared_ptr<PreferenceStore> store) : store_(std::move(store)) {
    store_->beginWriteGroup();
  }
  // Ends it: when it is the outermost, its writes become durable now.
  ~PreferenceWriteGroup() { store_->endWriteGroup(); }
  PreferenceWriteGroup(const PreferenceWriteGroup&) = delete;
  PreferenceWriteGroup& operator=(const PreferenceWriteGroup&) = delete;

 private:
  const std::shared_ptr<PreferenceStore> store_;
};

// The platform's own readings of a stored value as an integer and as a
// boolean: a number gives its value (a fraction truncated toward zero), a
// boolean 1 or 0, a text that spells a number that number, anything else 0 or
// false.
std::int64_t IntegerReading(const PreferenceValue& value);
bool BoolReading(const PreferenceValue& value);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_PREFERENCE_STORE_H_
