#include "support/temporary_store.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace obolo::testing {

std::string MakeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "obolo-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  return pattern;
}

TemporaryStore::TemporaryStore()
    : directory_(MakeTemporaryDirectory()),
      path_(directory_ + "/preferences.sqlite3"),
      store_(std::make_shared<SqlitePreferenceStore>(path_)) {
  PreferenceStore::setStandard(store_);
}

TemporaryStore::~TemporaryStore() {
  PreferenceStore::setStandard(nullptr);
  store_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

}  // namespace obolo::testing
