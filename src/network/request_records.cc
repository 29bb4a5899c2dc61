#include "network/request_records.h"

#include <nlohmann/json.hpp>

namespace obolo {
namespace {

std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// Text that JSON carries as it is: printable ASCII without quotes or
// backslashes. Keys, addresses and the other texts of a body almost always are.
bool IsPlain(const std::string& text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte >= 0x7f || c == '"' || c == '\\') return false;
  }
  return true;
}

// A JSON string. Plain text is copied; anything else is escaped by
// nlohmann-json, which also replaces bytes that are not UTF-8.
void AppendString(std::string& out, const std::string& text) {
  if (IsPlain(text)) {
    out += '"';
    out += text;
    out += '"';
  } else {
    out += Quoted(text);
  }
}

}  // namespace

void BodyMap::putText(std::string_view key, const std::string& value) {
  if (!value.empty()) entries_.emplace_back(std::string(key), value);
}

void BodyMap::putInteger(std::string_view key, std::int64_t value) {
  if (value != 0) entries_.emplace_back(std::string(key), value);
}

void BodyMap::putBool(std::string_view key, bool value) { entries_.emplace_back(std::string(key), value); }

// Written directly, in the compact form nlohmann-json's dump gives (a body is
// built for every call, and a JSON document for it costs more than the call's
// other work on the issuing thread together).
std::string BodyMap::json() const {
  std::string out = "{";
  for (const auto& [key, value] : entries_) {
    if (out.size() > 1) out += ',';
    AppendString(out, key);
    out += ':';
    if (const auto* text = std::get_if<std::string>(&value)) {
      AppendString(out, *text);
    } else if (const auto* number = std::get_if<std::int64_t>(&value)) {
      out += std::to_string(*number);
    } else {
      out += std::get<bool>(value) ? "true" : "false";
    }
  }
  out += '}';
  return out;
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
