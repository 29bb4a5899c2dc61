#include "entry/user_default_key.h"

#include <array>

namespace obolo {
namespace {

constexpr std::array<std::pair<UserDefaultKey, std::string_view>, 5> kNames = {{
    {UserDefaultKey::deviceKey, "deviceKey"},
    {UserDefaultKey::accessToken, "accessToken"},
    {UserDefaultKey::refreshToken, "refreshToken"},
    {UserDefaultKey::email, "email"},
    {UserDefaultKey::customerId, "customerId"},
}};

}  // namespace

std::string_view rawValue(UserDefaultKey key) {
  for (const auto& [candidate, name] : kNames) {
    if (candidate == key) return name;
  }
  return {};
}

std::optional<UserDefaultKey> UserDefaultKeyFromRawValue(std::string_view name) {
  for (const auto& [key, candidate] : kNames) {
    if (candidate == name) return key;
  }
  return std::nullopt;
}

UserDefaults::UserDefaults(std::shared_ptr<PreferenceStore> store) : store_(std::move(store)) {}

UserDefaults UserDefaults::standard() { return UserDefaults(PreferenceStore::standard()); }

std::optional<PreferenceValue> UserDefaults::object(UserDefaultKey key) const {
  return store_->object(rawValue(key));
}

bool UserDefaults::boolean(UserDefaultKey key, bool defaultValue) const {
  const auto value = object(key);
  if (value && std::holds_alternative<bool>(*value)) return std::get<bool>(*value);
  return defaultValue;
}

std::string UserDefaults::string(UserDefaultKey key, std::string_view defaultValue) const {
  auto value = object(key);
  if (value && std::holds_alternative<std::string>(*value)) return std::get<std::string>(std::move(*value));
  return std::string(defaultValue);
}

std::int64_t UserDefaults::integer(UserDefaultKey key, std::int64_t defaultValue) const {
  const auto value = object(key);
  if (value && std::holds_alternative<std::int64_t>(*value)) return std::get<std::int64_t>(*value);
  return defaultValue;
}

void UserDefaults::set(bool value, UserDefaultKey key) { store_->set(rawValue(key), value); }

void UserDefaults::set(std::string_view value, UserDefaultKey key) {
  store_->set(rawValue(key), std::string(value));
}

void UserDefaults::set(std::int64_t value, UserDefaultKey key) { store_->set(rawValue(key), value); }

void UserDefaults::removeObject(UserDefaultKey key) { store_->removeObject(rawValue(key)); }

}  // namespace obolo
