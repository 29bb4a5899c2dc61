// Devices, one-time codes, login keys, tokens and the operations that use
// them: customer bid, token refresh, logout and bearer authentication.

#include <utility>

#include "sandbox/random_text.h"
#include "sandbox/text_case.h"
#include "sandbox/world.h"

namespace obolo::sandbox {
namespace {

constexpr char kClientId[] = "obolo-sandbox-kit";
constexpr char kScope[] = "obolo/wallet";

std::int64_t NowSeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

std::optional<bool> World::isDeviceLoggedOut(std::string_view device_key) const {
  std::lock_guard lock(mutex_);
  auto it = devices_.find(device_key);
  if (it == devices_.end()) return std::nullopt;
  return !it->second.loggedIn;
}

World::DeviceRecord& World::newDevice(std::int64_t customer_id, std::string user_agent) {
  DeviceRecord device;
  device.view.id = next_device_id_++;
  device.view.deviceKey = "dk-" + RandomHex(16);
  device.view.userAgent = std::move(user_agent);
  device.customerId = customer_id;
  std::string key = device.view.deviceKey;
  return devices_.emplace(std::move(key), std::move(device)).first->second;
}

LoginKeys World::newLoginKeys(const CustomerRecord& record) {
  DeviceRecord& device = newDevice(record.customer.id, "");
  LoginKeys keys{device.view.deviceKey, "lk-" + RandomHex(16)};
  login_keys_.emplace(keys.loginKey, LoginKeyRecord{keys.deviceKey, record.customer.id, false});
  return keys;
}

std::string World::issueToken(const CustomerRecord& record, const std::string& device_key, const char* use,
                              std::chrono::seconds lifetime) {
  const std::int64_t now = NowSeconds();
  TokenClaims claims;
  claims.jti = RandomUuid();
  claims.username = record.customer.email;
  claims.tokenUse = use;
  claims.iss = issuer_;
  claims.scope = kScope;
  claims.exp = now + lifetime.count();
  claims.sub = std::to_string(record.customer.id);
  claims.eventId = RandomUuid();
  claims.clientId = kClientId;
  claims.iat = now;
  claims.authTime = now;
  grants_.emplace(claims.jti, Grant{device_key, record.customer.id, use, false});
  return signer_.sign(claims);
}

IssuedTokens World::issueSession(const CustomerRecord& record, const std::string& device_key,
                                 std::chrono::seconds access_lifetime,
                                 std::chrono::seconds refresh_lifetime) {
  IssuedTokens tokens;
  tokens.accessToken = issueToken(record, device_key, "access", access_lifetime);
  tokens.refreshToken = issueToken(record, device_key, "refresh", refresh_lifetime);
  tokens.idToken = issueToken(record, device_key, "id", access_lifetime);
  return tokens;
}

Outcome<Caller> World::authenticate(std::string_view access_token) const {
  if (access_token.empty()) return ApiError{401, "Missing bearer token"};
  TokenClaims claims;
  switch (signer_.verify(access_token, NowSeconds(), &claims)) {
    case TokenCheck::kValid:
      break;
    case TokenCheck::kExpired:
      return ApiError{401, "Access token expired"};
    case TokenCheck::kMalformed:
    case TokenCheck::kBadSignature:
      return ApiError{401, "Invalid access token"};
  }
  if (claims.tokenUse != "access") return ApiError{401, "Not an access token"};

  std::lock_guard lock(mutex_);
  auto grant = grants_.find(claims.jti);
  if (grant == grants_.end()) return ApiError{401, "Unknown access token"};
  auto device = devices_.find(grant->second.deviceKey);
  if (grant->second.revoked || device == devices_.end() || !device->second.loggedIn) {
    return ApiError{401, "Access token revoked: the device is logged out"};
  }
  return Caller{grant->second.customerId, grant->second.deviceKey};
}

Outcome<CustomerBidView> World::customerBid(std::string_view device_key, std::int64_t bid_id,
                                            std::string_view login_key) {
  std::lock_guard lock(mutex_);
  auto bid = bids_.find(bid_id);
  if (bid == bids_.end()) return ApiError{404, "Unknown bid " + std::to_string(bid_id)};
  auto key = login_keys_.find(login_key);
  if (key == login_keys_.end() || key->second.used) return ApiError{401, "Invalid or used login key"};
  if (key->second.deviceKey != device_key)
    return ApiError{401, "The login key was not issued for this device"};
  auto customer = customers_.find(key->second.customerId);
  auto device = devices_.find(device_key);
  if (customer == customers_.end() || device == devices_.end()) return ApiError{401, "Unknown customer"};
  if (bid->second.bid.customerId && *bid->second.bid.customerId != customer->first) {
    return ApiError{409, "Bid " + std::to_string(bid_id) + " belongs to another customer"};
  }

  key->second.used = true;
  device->second.loggedIn = true;
  device->second.view.userAgent = bid->second.userAgent;
  if (!bid->second.bid.customerId) ++counters_[bid->second.bid.articleId].knownVisits;
  bid->second.bid.customerId = customer->first;

  CustomerBidView view;
  view.bid = viewOf(bid->second);
  view.device = device->second.view;
  view.tokens =
      issueSession(customer->second, device->second.view.deviceKey, access_lifetime_, refresh_lifetime_);
  view.loginKey = std::string(login_key);
  view.customerUnlocks = static_cast<std::int64_t>(customer->second.purchases.size());
  return view;
}

Outcome<RefreshView> World::nextAccessToken(std::string_view device_key, std::string_view email,
                                            std::string_view refresh_token) {
  if (refresh_token.empty()) return ApiError{401, "Missing refresh token"};
  TokenClaims claims;
  switch (signer_.verify(refresh_token, NowSeconds(), &claims)) {
    case TokenCheck::kValid:
      break;
    case TokenCheck::kExpired:
      return ApiError{401, "Refresh token expired"};
    case TokenCheck::kMalformed:
    case TokenCheck::kBadSignature:
      return ApiError{401, "Invalid refresh token"};
  }
  if (claims.tokenUse != "refresh") return ApiError{401, "Not a refresh token"};

  std::lock_guard lock(mutex_);
  auto grant = grants_.find(claims.jti);
  if (grant == grants_.end() || grant->second.revoked) return ApiError{401, "Refresh token revoked"};
  if (grant->second.deviceKey != device_key)
    return ApiError{401, "The refresh token belongs to another device"};
  auto device = devices_.find(device_key);
  if (device == devices_.end() || !device->second.loggedIn) return ApiError{401, "The device is logged out"};
  auto customer = customers_.find(grant->second.customerId);
  if (customer == customers_.end()) return ApiError{401, "Unknown customer"};
  if (!EqualsIgnoringCase(email, customer->second.customer.email)) {
    return ApiError{401, "The e-mail does not match the session"};
  }

  RefreshView view;
  view.customer = customer->second.customer;
  view.device = device->second.view;
  view.accessToken = issueToken(customer->second, device->second.view.deviceKey, "access", access_lifetime_);
  view.customerUnlocks = static_cast<std::int64_t>(customer->second.purchases.size());
  return view;
}

Outcome<bool> World::logoutDevice(const Caller& caller, std::string_view device_key, std::string_view email) {
  std::lock_guard lock(mutex_);
  auto customer = customers_.find(caller.customerId);
  if (customer == customers_.end()) return ApiError{401, "Unknown customer"};
  if (!email.empty() && !EqualsIgnoringCase(email, customer->second.customer.email)) {
    return ApiError{403, "The e-mail does not match the access token"};
  }
  const std::string_view target = device_key.empty() ? std::string_view(caller.deviceKey) : device_key;
  auto device = devices_.find(target);
  if (device == devices_.end()) return ApiError{404, "Unknown device"};
  if (device->second.customerId != caller.customerId) {
    return ApiError{403, "The device belongs to another customer"};
  }
  device->second.loggedIn = false;
  for (auto& [jti, grant] : grants_) {
    if (grant.deviceKey == device->first) grant.revoked = true;
  }
  return true;
}

Outcome<std::string> World::issueOneTimeCode(std::string_view email) {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  if (record == nullptr) return ApiError{404, "No wallet is registered for " + std::string(email)};
  std::string code = RandomDigits(6);
  one_time_codes_.insert_or_assign(AsciiLower(email), code);
  return code;
}

Outcome<LoginKeys> World::verifyOneTimeCode(std::string_view email, std::string_view code) {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  auto expected = one_time_codes_.find(AsciiLower(email));
  if (record == nullptr || expected == one_time_codes_.end() || code.empty() || expected->second != code) {
    return ApiError{401, "Wrong or expired code"};
  }
  one_time_codes_.erase(expected);
  return newLoginKeys(*record);
}

std::optional<std::string> World::lastOneTimeCode(std::string_view email) const {
  std::lock_guard lock(mutex_);
  auto it = one_time_codes_.find(AsciiLower(email));
  if (it == one_time_codes_.end()) return std::nullopt;
  return it->second;
}

std::optional<LoginKeys> World::issueLoginKeys(std::string_view email) {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  if (record == nullptr) return std::nullopt;
  return newLoginKeys(*record);
}

std::optional<SessionKeys> World::createSession(std::string_view email, std::chrono::seconds access_lifetime,
                                                std::chrono::seconds refresh_lifetime) {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  if (record == nullptr) return std::nullopt;
  DeviceRecord& device = newDevice(record->customer.id, "");
  device.loggedIn = true;
  IssuedTokens tokens = issueSession(*record, device.view.deviceKey, access_lifetime, refresh_lifetime);
  return SessionKeys{device.view.deviceKey, tokens.accessToken, tokens.refreshToken, record->customer.id,
                     record->customer.email};
}

std::optional<SessionKeys> World::createSession(std::string_view email) {
  std::chrono::seconds access{};
  std::chrono::seconds refresh{};
  {
    std::lock_guard lock(mutex_);
    access = access_lifetime_;
    refresh = refresh_lifetime_;
  }
  return createSession(email, access, refresh);
}

}  // namespace obolo::sandbox
