// A preference store of the test's own, so tests never touch each other's data
// or the developer's real session, and the session in it as one value.

#ifndef OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_
#define OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

#include "platform/sqlite_preference_store.h"
#include "sandbox/world_types.h"

namespace obolo::testing {

// Creates a SQLite store in a fresh temporary directory and installs it as the
// standard store; uninstalls it and removes the directory on destruction.
class TemporaryStore {
 public:
  TemporaryStore();
  ~TemporaryStore();
  TemporaryStore(const TemporaryStore&) = delete;
  TemporaryStore& operator=(const TemporaryStore&) = delete;

  PreferenceStore& store() const { return *store_; }
  SqlitePreferenceStore& sqliteStore() const { return *store_; }
  // The store's file.
  std::string path() const { return directory_ + "/preferences.sqlite3"; }

 private:
  std::string directory_;
  std::shared_ptr<SqlitePreferenceStore> store_;
};

// A fresh temporary directory (removed by the caller).
std::string MakeTemporaryDirectory();

// The five stored values of the reader's session.
struct StoredSession {
  std::string deviceKey, accessToken, refreshToken, email;
  std::int64_t customerId = 0;

  // Through GlobalVariable, from the standard store.
  static StoredSession Read();
  // The same readings from `store`.
  static StoredSession ReadFrom(std::shared_ptr<PreferenceStore> store);
  static StoredSession Of(const sandbox::SessionKeys& keys) {
    return {keys.deviceKey, keys.accessToken, keys.refreshToken, keys.email, keys.customerId};
  }
  bool empty() const { return *this == StoredSession{}; }
  bool operator==(const StoredSession&) const = default;
};
void PrintTo(const StoredSession& session, std::ostream* out);

// Stores a session as a login leaves it.
void StoreSession(const sandbox::SessionKeys& keys);
void StoreSessionOf(const StoredSession& session);

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_
