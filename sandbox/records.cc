#include "sandbox/records.h"

#include <utility>

#include "sandbox/price_format.h"

namespace obolo::sandbox {
namespace {

// Each login opens a session on a phone's embedded web view.
constexpr char kDeviceType[] = "mobile";
constexpr char kDeviceBrowser[] = "WebView";
constexpr char kDeviceOs[] = "iOS";

Json DeviceJson(const DeviceView& device) {
  Json json;
  json["deviceId"] = device.id;
  json["deviceKey"] = device.deviceKey;
  if (!device.userAgent.empty()) json["userAgent"] = device.userAgent;
  json["type"] = kDeviceType;
  json["browser"] = kDeviceBrowser;
  json["os"] = kDeviceOs;
  return json;
}

}  // namespace

Json PaywallSettingsJson(const BidView& bid) {
  const std::string price = FormatPrice(bid.article.priceInLocalCurrency, bid.article.currency);
  Json json;
  json["obTitleText"] = "Read the whole article";
  json["obPromptText"] = "Unlock \u201C" + bid.article.title + "\u201D from " + bid.publisher.name + " for " +
                         price + ". No subscription: you pay for this article only.";
  json["obButtonText"] = "Unlock for " + price;
  json["obBalanceText"] = "I agree that " + price + " is taken from my Obolo wallet for this article.";
  json["obAutoUnlockText"] = "Thank you! The article is unlocked. Enjoy your reading.";
  json["showMobileImage"] = true;
  json["showDesktopImage"] = false;
  json["obCustomerPrice"] = price;
  return json;
}

Json DataSetJson(const BidView& bid) {
  Json json;
  json["oboloBidId"] = bid.bid.id;
  json["publisherId"] = bid.publisher.id;
  json["publisherCurrency"] = bid.publisher.currency;
  json["isImplicitUnlock"] = false;
  json["articleId"] = bid.article.id;
  if (!bid.ipAddress.empty()) json["ipAddress"] = bid.ipAddress;
  json["articleActive"] = bid.article.active;
  json["unlocked"] = bid.customer.has_value() && bid.owned;
  if (bid.customer) {
    json["customerId"] = bid.customer->id;
    json["customerCurrency"] = bid.customer->currency;
  }
  json["articlePrice"] = bid.article.price;
  json["articlePriceInLocalCurrency"] = bid.article.priceInLocalCurrency;
  json["oboloTransactionMode"] = bid.article.transactionMode;
  json["isPaywallEnabledInCountry"] = bid.article.paywallEnabledInCountry;
  if (bid.customer) {
    json["customerBalance"] = bid.customer->balance;
    json["customerName"] = bid.customer->name;
  }
  json["isFacebookLoginEnabled"] = false;
  json["minBalance"] = 0.0;
  json["preLoginText"] = "Log in to your Obolo wallet to unlock this article.";
  if (bid.customer) json["postLoginText"] = "Logged in as " + bid.customer->email + ".";
  json["isSIMEnabled"] = bid.isSIMEnabled;
  // A reader who is not logged in has no wallet to judge yet: the service lets
  // the card offer the unlock, which leads to the login.
  json["isCreditAllowed"] = bid.customer ? bid.customer->creditAllowed : true;
  json["articleIdentifier"] = std::to_string(bid.article.id);
  json["isMeteringAvailable"] = false;
  json["isGift"] = false;
  json["paywallSettings"] = PaywallSettingsJson(bid);
  return json;
}

Json CustomerJson(const Customer& customer, std::int64_t unlocks) {
  Json json;
  json["id"] = customer.id;
  json["email"] = customer.email;
  json["emailVerified"] = true;
  json["name"] = customer.name;
  json["cancelled"] = false;
  json["customerLifetimeUnlock"] = unlocks;
  json["signupMethod"] = "email";
  json["implicitUnlock"] = false;
  json["registeredFromCountry"] = customer.homeCountry;
  json["createdDate"] = customer.createdDate;
  json["homeCountry"] = customer.homeCountry;
  json["homeCurrency"] = customer.currency;
  json["isWalletCurrencyConfirmed"] = true;
  json["currencyChangeAllowed"] = false;
  return json;
}

Json CustomerInfoJson(const CustomerBidView& login) {
  Json json = DeviceJson(login.device);
  json["accessToken"] = login.tokens.accessToken;
  json["refreshToken"] = login.tokens.refreshToken;
  json["idToken"] = login.tokens.idToken;
  json["loginKey"] = login.loginKey;
  if (login.bid.customer) json["customer"] = CustomerJson(*login.bid.customer, login.customerUnlocks);
  return json;
}

Json RefreshedCustomerInfoJson(const RefreshView& refresh) {
  Json json = DeviceJson(refresh.device);
  json["accessToken"] = refresh.accessToken;
  json["customer"] = CustomerJson(refresh.customer, refresh.customerUnlocks);
  return json;
}

Json BalanceDataJson(const BalanceView& balance, std::string_view image_url) {
  Json json;
  json["balance"] = balance.customer.balance;
  json["currency"] = balance.customer.currency;
  json["customerId"] = balance.customer.id;
  if (balance.lastArticle && balance.lastPublisher) {
    json["lastArticleCurrency"] = balance.lastArticle->currency;
    json["lastArticleMode"] = balance.lastArticle->transactionMode;
    json["lastArticlePrice"] = balance.lastArticle->priceInLocalCurrency;
    json["lastArticlePublisher"] = balance.lastPublisher->name;
    json["lastArticleTitle"] = balance.lastArticle->title;
  }
  Json recommendations = Json::array();
  for (const auto& item : balance.recommendations) {
    Json entry;
    entry["active"] = item.article.active;
    entry["articleAuthor"] = item.article.author;
    entry["articleCategory"] = item.article.category;
    entry["articleId"] = item.article.id;
    entry["articleImageUrl"] = std::string(image_url);
    entry["articlePublishedDate"] = item.article.publishedDate;
    entry["articleReadByCurrentCustomer"] = item.readByCustomer;
    entry["articleTitle"] = item.article.title;
    entry["articleUrl"] = item.article.url;
    entry["knownVisits"] = item.knownVisits;
    entry["publisherId"] = item.publisher.id;
    entry["publisherName"] = item.publisher.name;
    entry["unlocks"] = item.unlocks;
    entry["visits"] = item.visits;
    recommendations.push_back(std::move(entry));
  }
  json["recommendations"] = std::move(recommendations);
  return json;
}

Json SuccessEnvelope(std::string_view message, Json data) {
  Json json;
  json["success"] = true;
  json["message"] = std::string(message);
  json["data"] = std::move(data);
  return json;
}

Json SuccessEnvelopeWithStatus(std::string_view message, Json data) {
  Json json = SuccessEnvelope(message, std::move(data));
  json["statusCode"] = 200;
  return json;
}

Json ErrorEnvelope(int status, std::string_view message) {
  Json json;
  json["success"] = false;
  json["message"] = std::string(message);
  json["statusCode"] = status;
  return json;
}

std::string Dump(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace obolo::sandbox
