#include "support/temporary_store.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "entry/global_variable.h"
#include "entry/user_default_key.h"

namespace obolo::testing {

std::string MakeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "obolo-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  return pattern;
}

TemporaryStore::TemporaryStore()
    : directory_(MakeTemporaryDirectory()),
      store_(std::make_shared<SqlitePreferenceStore>(directory_ + "/preferences.sqlite3")) {
  PreferenceStore::setStandard(store_);
}

TemporaryStore::~TemporaryStore() {
  PreferenceStore::setStandard(nullptr);
  store_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

StoredSession StoredSession::Read() {
  const GlobalVariable& global = GlobalVariable::shared();
  return {global.getDeviceKey(), global.getAccessToken(), global.getRefreshToken(), global.getEmail(),
          global.getCustomerId()};
}

StoredSession StoredSession::ReadFrom(std::shared_ptr<PreferenceStore> store) {
  const UserDefaults defaults(std::move(store));
  const auto id = defaults.object(UserDefaultKey::customerId);
  return {defaults.string(UserDefaultKey::deviceKey), defaults.string(UserDefaultKey::accessToken),
          defaults.string(UserDefaultKey::refreshToken), defaults.string(UserDefaultKey::email),
          id ? IntegerReading(*id) : 0};
}

void PrintTo(const StoredSession& s, std::ostream* out) {
  *out << "{" << s.deviceKey << ", " << s.accessToken << ", " << s.refreshToken << ", " << s.email << ", "
       << s.customerId << "}";
}

void StoreSession(const sandbox::SessionKeys& keys) {
  GlobalVariable& global = GlobalVariable::shared();
  global.setDeviceKey(keys.deviceKey);
  global.setAccessToken(keys.accessToken);
  global.setRefreshToken(keys.refreshToken);
  global.setEmail(keys.email);
  global.setCustomerId(keys.customerId);
}

void StoreSessionOf(const StoredSession& s) {
  StoreSession({s.deviceKey, s.accessToken, s.refreshToken, s.customerId, s.email});
}

}  // namespace obolo::testing
