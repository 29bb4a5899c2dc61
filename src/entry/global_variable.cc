#include "entry/global_variable.h"

#include "entry/jwt_decode.h"
#include "platform/log.h"

namespace obolo {

GlobalVariable& GlobalVariable::shared() {
  static GlobalVariable* const instance = new GlobalVariable();  // never destroyed: used until exit
  return *instance;
}

#define OBOLO_TEXT_FIELD(getter, setter, member)          \
  std::string GlobalVariable::getter() const {            \
    std::lock_guard<std::mutex> lock(mutex_);             \
    return member;                                        \
  }                                                       \
  void GlobalVariable::setter(std::string value) {        \
    std::lock_guard<std::mutex> lock(mutex_);             \
    member = std::move(value);                            \
  }

OBOLO_TEXT_FIELD(accessKey, setAccessKey, accessKey_)
OBOLO_TEXT_FIELD(category, setCategory, category_)
OBOLO_TEXT_FIELD(articleUrl, setArticleUrl, articleUrl_)
OBOLO_TEXT_FIELD(publisherCustomerId, setPublisherCustomerId, publisherCustomerId_)
OBOLO_TEXT_FIELD(publisherDomain, setPublisherDomain, publisherDomain_)
OBOLO_TEXT_FIELD(logoUrl, setLogoUrl, logoUrl_)

#undef OBOLO_TEXT_FIELD

std::int64_t GlobalVariable::publisherId() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return publisherId_;
}

void GlobalVariable::setPublisherId(std::int64_t value) {
  std::lock_guard<std::mutex> lock(mutex_);
  publisherId_ = value;
}

bool GlobalVariable::isOBTokenExist() const { return !getAccessToken().empty(); }

bool GlobalVariable::isOBTokenValid() const { return isTokenValid(getAccessToken()); }

bool GlobalVariable::isRefreshTokenValid() const {
  const std::string token = getRefreshToken();
  if (token.empty()) return false;
  return isTokenValid(token);
}

bool GlobalVariable::isTokenValid(std::string_view token) const {
  const TokenData data = JWTDecode::shared().decode(token);
  const Date expiry = dateFromMilliseconds(data.exp.value_or(0));
  const Date now = Date::now();
  // The instants are formatted only for a sink that keeps the lines.
  const bool logged = LogLineWanted();
  if (logged) {
    LogLine(expiry.description());
    LogLine(now.description());
  }
  const auto minutes = MinutesBetween(now, expiry);
  if (!minutes) return false;
  if (logged) LogLine(std::to_string(*minutes));
  return *minutes > 0;
}

void GlobalVariable::setAccessToken(std::string_view value) {
  UserDefaults::standard().set(value, UserDefaultKey::accessToken);
  LogLine(getAccessToken(), LogContent::kCredential);
}

std::string GlobalVariable::getAccessToken() const { return getString(UserDefaultKey::accessToken); }

void GlobalVariable::setRefreshToken(std::string_view value) {
  UserDefaults::standard().set(value, UserDefaultKey::refreshToken);
}

std::string GlobalVariable::getRefreshToken() const { return getString(UserDefaultKey::refreshToken); }

void GlobalVariable::setDeviceKey(std::string_view value) {
  UserDefaults::standard().set(value, UserDefaultKey::deviceKey);
}

std::string GlobalVariable::getDeviceKey() const { return getString(UserDefaultKey::deviceKey); }

void GlobalVariable::setEmail(std::string_view value) { UserDefaults::standard().set(value, UserDefaultKey::email); }

std::string GlobalVariable::getEmail() const { return getString(UserDefaultKey::email); }

void GlobalVariable::setCustomerId(std::int64_t value) {
  UserDefaults::standard().set(value, UserDefaultKey::customerId);
}

std::int64_t GlobalVariable::getCustomerId() const { return getInt(UserDefaultKey::customerId); }

void GlobalVariable::logout() {
  const std::shared_ptr<PreferenceStore> store = PreferenceStore::standard();
  const PreferenceWriteGroup session(store);
  UserDefaults defaults(store);
  defaults.removeObject(UserDefaultKey::deviceKey);
  defaults.removeObject(UserDefaultKey::accessToken);
  defaults.removeObject(UserDefaultKey::refreshToken);
  defaults.removeObject(UserDefaultKey::customerId);
  defaults.removeObject(UserDefaultKey::email);
}

PreferenceWriteGroup GlobalVariable::sessionWriteGroup() const {
  return PreferenceWriteGroup(PreferenceStore::standard());
}

std::string GlobalVariable::getString(UserDefaultKey key) const {
  // An absent key and a value that is not a text both read as "".
  return UserDefaults::standard().string(key);
}

std::int64_t GlobalVariable::getInt(UserDefaultKey key) const {
  const auto value = UserDefaults::standard().object(key);
  return value ? IntegerReading(*value) : 0;
}

bool GlobalVariable::getBool(UserDefaultKey key) const {
  const auto value = UserDefaults::standard().object(key);
  return value ? BoolReading(*value) : false;
}

}  // namespace obolo
