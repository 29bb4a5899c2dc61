// The names the reader's session is stored under, and typed access to the
// preference store by those names.
//
// The key names are the stored format: a session written by one build of the
// kit is read by the next, so they never change.

#ifndef OBOLO_ENTRY_USER_DEFAULT_KEY_H_
#define OBOLO_ENTRY_USER_DEFAULT_KEY_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/preference_store.h"

namespace obolo {

// The session records the store keeps, one name each.
enum class UserDefaultKey { deviceKey, accessToken, refreshToken, email, customerId };

// The key's name in the store: "deviceKey", "accessToken", "refreshToken",
// "email", "customerId".
std::string_view rawValue(UserDefaultKey key);

// The key with exactly this name (case-sensitive); none for any other text.
std::optional<UserDefaultKey> UserDefaultKeyFromRawValue(std::string_view name);

// Typed reads and writes of a preference store keyed by UserDefaultKey. Reads
// never fail: a value of another kind than asked for gives the default.
class UserDefaults {
 public:
  // Over `store`, which it shares.
  explicit UserDefaults(std::shared_ptr<PreferenceStore> store);
  // Over PreferenceStore::standard(), looked up now.
  static UserDefaults standard();

  // The stored value under `key`, none when absent; or read as a boolean, a
  // text or an integer, with `defaultValue` when absent or of another kind.
  std::optional<PreferenceValue> object(UserDefaultKey key) const;
  bool boolean(UserDefaultKey key, bool defaultValue = false) const;
  std::string string(UserDefaultKey key, std::string_view defaultValue = "") const;
  std::int64_t integer(UserDefaultKey key, std::int64_t defaultValue = 0) const;

  // Stores a value under `key`, replacing what was there; or removes it.
  void set(bool value, UserDefaultKey key);
  void set(std::string_view value, UserDefaultKey key);
  void set(const char* value, UserDefaultKey key) { set(std::string_view(value), key); }
  void set(std::int64_t value, UserDefaultKey key);
  void removeObject(UserDefaultKey key);

  PreferenceStore& store() const { return *store_; }  // the store it reads and writes

 private:
  std::shared_ptr<PreferenceStore> store_;
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_USER_DEFAULT_KEY_H_
