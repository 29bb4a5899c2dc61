#include "network/request_records.h"

#include <nlohmann/json.hpp>

namespace obolo {
namespace {

std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

void BodyMap::putText(std::string_view key, const std::string& value) {
  if (!value.empty()) entries_.emplace_back(std::string(key), value);
}

void BodyMap::putInteger(std::string_view key, std::int64_t value) {
  if (value != 0) entries_.emplace_back(std::string(key), value);
}

void BodyMap::putBool(std::string_view key, bool value) { entries_.emplace_back(std::string(key), value); }

std::string BodyMap::json() const {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const auto& entry : entries_) {
    std::visit([&object, &entry](const auto& v) { object[entry.first] = v; }, entry.second);
  }
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string BodyMap::description() const {
  if (entries_.empty()) return "[:]";
  std::string text = "[";
  for (size_t i = 0; i < entries_.size(); ++i) {
    const auto& [key, value] = entries_[i];
    if (i > 0) text += ", ";
    text += Quoted(key) + ": ";
    if (const auto* s = std::get_if<std::string>(&value)) {
      text += Quoted(*s);
    } else if (const auto* n = std::get_if<std::int64_t>(&value)) {
      text += std::to_string(*n);
    } else {
      text += std::get<bool>(value) ? "true" : "false";
    }
  }
  return text + "]";
}

BodyMap CreateLoggedBidParam::bodyMap() const {
  BodyMap map;
  map.putText("accessKey", accessKey);
  map.putText("articleIdentifier", articleIdentifier);
  map.putText("articleUrl", articleUrl);
  map.putText("category", category);
  map.putInteger("customerId", customerId);
  map.putText("giftCode", giftCode);
  map.putText("ipAddress", ipAddress);
  map.putBool("isCustomerLoggedIn", isCustomerLoggedIn);
  map.putBool("isSIMEnabled", isSIMEnabled);
  map.putInteger("publisherAsk", publisherAsk);
  map.putText("publisherCustomerId", publisherCustomerId);
  map.putText("publisherDomain", publisherDomain);
  map.putText("simplifiedUrl", simplifiedUrl);
  map.putText("userAgent", userAgent);
  return map;
}

BodyMap CustomerBidParam::bodyMap() const {
  BodyMap map;
  map.putText("deviceKey", deviceKey);
  map.putInteger("oboloBidId", oboloBidId);
  map.putText("loginToken", loginToken);
  return map;
}

BodyMap NextTokenParam::bodyMap() const {
  BodyMap map;
  map.putText("deviceKey", deviceKey);
  map.putText("email", email);
  map.putText("refreshToken", refreshToken);
  return map;
}

BodyMap AcceptBidParam::bodyMap() const {
  BodyMap map;
  map.putInteger("oboloBidId", oboloBidId);
  map.putText("oboloTransactionMode", oboloTransactionMode);
  return map;
}

BodyMap BalanceAndArticleParam::bodyMap() const {
  BodyMap map;
  map.putInteger("oboloBidId", oboloBidId);
  map.putInteger("customerId", customerId);
  map.putInteger("publisherId", publisherId);
  return map;
}

BodyMap LogoutParam::bodyMap() const {
  BodyMap map;
  map.putText("deviceKey", deviceKey);
  map.putText("email", email);
  return map;
}

std::string ModuleQualifiedName(std::string_view typeName) {
  return "Obolo_iOS_SDK." + std::string(typeName);
}

}  // namespace obolo
