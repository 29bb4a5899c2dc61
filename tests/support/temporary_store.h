// A preference store of the test's own, so tests never touch each other's data
// or the developer's real session.

#ifndef OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_
#define OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_

#include <memory>
#include <string>

#include "platform/sqlite_preference_store.h"

namespace obolo::testing {

// Creates a SQLite store in a fresh temporary directory and installs it as the
// standard store; uninstalls it and removes the directory on destruction.
class TemporaryStore {
 public:
  TemporaryStore();
  ~TemporaryStore();
  TemporaryStore(const TemporaryStore&) = delete;
  TemporaryStore& operator=(const TemporaryStore&) = delete;

  const std::string& path() const { return path_; }
  PreferenceStore& store() const { return *store_; }

 private:
  std::string directory_;
  std::string path_;
  std::shared_ptr<SqlitePreferenceStore> store_;
};

// A fresh temporary directory (removed by the caller).
std::string MakeTemporaryDirectory();

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_TEMPORARY_STORE_H_
