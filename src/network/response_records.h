// The records the paywall service answers with.
//
// Plain values: copied on assignment, every member public and mutable, every
// member optional (absent is distinct from false, 0 or "") except the `data`
// of LogoutData. JSON keys are the member names exactly. Construct a record
// empty with `{}` or memberwise in declared order (`DataSet{12, 7}`);
// LogoutData, whose `data` is required, is built memberwise only.
//
// decode() applies the strict rules of platform/json_record.h: a value of the
// wrong JSON type anywhere fails the whole answer with a sentence naming the
// member. encode() leaves absent members out. description() writes every
// member, absent ones as nil, for the kit's diagnostic lines.

#ifndef OBOLO_NETWORK_RESPONSE_RECORDS_H_
#define OBOLO_NETWORK_RESPONSE_RECORDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/json_record.h"

namespace obolo {

// One recommended article in a balance answer.
struct Recommendation {
  static constexpr std::string_view kName = "Recommendation";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<bool> active{};
  std::optional<std::string> articleAuthor{};
  std::optional<std::string> articleCategory{};
  std::optional<std::int64_t> articleId{};
  std::optional<std::string> articleImageUrl{};
  std::optional<std::string> articlePublishedDate{};
  std::optional<bool> articleReadByCurrentCustomer{};
  std::optional<std::string> articleTitle{};
  std::optional<std::string> articleUrl{};
  std::optional<std::int64_t> knownVisits{};
  std::optional<std::int64_t> publisherId{};
  std::optional<std::string> publisherName{};
  std::optional<std::int64_t> unlocks{};
  std::optional<std::int64_t> visits{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("active", self.active);
    visit("articleAuthor", self.articleAuthor);
    visit("articleCategory", self.articleCategory);
    visit("articleId", self.articleId);
    visit("articleImageUrl", self.articleImageUrl);
    visit("articlePublishedDate", self.articlePublishedDate);
    visit("articleReadByCurrentCustomer", self.articleReadByCurrentCustomer);
    visit("articleTitle", self.articleTitle);
    visit("articleUrl", self.articleUrl);
    visit("knownVisits", self.knownVisits);
    visit("publisherId", self.publisherId);
    visit("publisherName", self.publisherName);
    visit("unlocks", self.unlocks);
    visit("visits", self.visits);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<Recommendation> decode(std::string_view json) { return DecodeRecord<Recommendation>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// The texts of the paywall card, as the publisher set them at the service.
struct PaywallSettingsSet {
  static constexpr std::string_view kName = "PaywallSettingsSet";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<std::string> obTitleText{};
  std::optional<std::string> obPromptText{};
  std::optional<std::string> obButtonText{};
  std::optional<std::string> obBalanceText{};
  std::optional<std::string> obAutoUnlockText{};
  std::optional<bool> showMobileImage{};
  std::optional<bool> showDesktopImage{};
  std::optional<std::string> obCustomerPrice{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("obTitleText", self.obTitleText);
    visit("obPromptText", self.obPromptText);
    visit("obButtonText", self.obButtonText);
    visit("obBalanceText", self.obBalanceText);
    visit("obAutoUnlockText", self.obAutoUnlockText);
    visit("showMobileImage", self.showMobileImage);
    visit("showDesktopImage", self.showDesktopImage);
    visit("obCustomerPrice", self.obCustomerPrice);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<PaywallSettingsSet> decode(std::string_view json) { return DecodeRecord<PaywallSettingsSet>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// The customer's profile. Dates are carried as the service writes them.
struct CustomerSet {
  static constexpr std::string_view kName = "CustomerSet";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<std::int64_t> id{};
  std::optional<std::string> email{};
  std::optional<bool> emailVerified{};
  std::optional<std::string> name{};
  std::optional<bool> cancelled{};
  std::optional<std::int64_t> sourcePublisherId{};
  std::optional<std::int64_t> customerLifetimeUnlock{};
  std::optional<std::string> signupMethod{};
  std::optional<bool> implicitUnlock{};
  std::optional<std::string> registeredFromCountry{};
  std::optional<std::string> createdDate{};
  std::optional<std::string> homeCountry{};
  std::optional<std::string> homeCurrency{};
  std::optional<bool> isWalletCurrencyConfirmed{};
  std::optional<bool> currencyChangeAllowed{};
  std::optional<std::string> lastOtp{};
  std::optional<std::string> lastOtpTime{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("id", self.id);
    visit("email", self.email);
    visit("emailVerified", self.emailVerified);
    visit("name", self.name);
    visit("cancelled", self.cancelled);
    visit("sourcePublisherId", self.sourcePublisherId);
    visit("customerLifetimeUnlock", self.customerLifetimeUnlock);
    visit("signupMethod", self.signupMethod);
    visit("implicitUnlock", self.implicitUnlock);
    visit("registeredFromCountry", self.registeredFromCountry);
    visit("createdDate", self.createdDate);
    visit("homeCountry", self.homeCountry);
    visit("homeCurrency", self.homeCurrency);
    visit("isWalletCurrencyConfirmed", self.isWalletCurrencyConfirmed);
    visit("currencyChangeAllowed", self.currencyChangeAllowed);
    visit("lastOtp", self.lastOtp);
    visit("lastOtpTime", self.lastOtpTime);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<CustomerSet> decode(std::string_view json) { return DecodeRecord<CustomerSet>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// The reader's device session, returned by a login (customer bid) or a token refresh.
struct CustomerInfoSet {
  static constexpr std::string_view kName = "CustomerInfoSet";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<std::int64_t> deviceId{};
  std::optional<std::string> deviceKey{};
  std::optional<std::string> userAgent{};
  std::optional<std::string> type{};
  std::optional<std::string> browser{};
  std::optional<std::string> os{};
  std::optional<std::string> accessToken{};
  std::optional<std::string> refreshToken{};
  std::optional<std::string> idToken{};
  std::optional<std::string> loginKey{};
  std::optional<CustomerSet> customer{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("deviceId", self.deviceId);
    visit("deviceKey", self.deviceKey);
    visit("userAgent", self.userAgent);
    visit("type", self.type);
    visit("browser", self.browser);
    visit("os", self.os);
    visit("accessToken", self.accessToken);
    visit("refreshToken", self.refreshToken);
    visit("idToken", self.idToken);
    visit("loginKey", self.loginKey);
    visit("customer", self.customer);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<CustomerInfoSet> decode(std::string_view json) { return DecodeRecord<CustomerInfoSet>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// A bid: the article, its price, the reader's balance and the card's texts.
struct DataSet {
  static constexpr std::string_view kName = "DataSet";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<std::int64_t> oboloBidId{};
  std::optional<std::int64_t> publisherId{};
  std::optional<std::string> publisherCurrency{};
  std::optional<bool> isImplicitUnlock{};
  std::optional<std::int64_t> articleId{};
  std::optional<std::string> ipAddress{};
  std::optional<bool> articleActive{};
  std::optional<bool> unlocked{};
  std::optional<std::int64_t> customerId{};
  std::optional<std::string> customerCurrency{};
  std::optional<double> articlePrice{};
  std::optional<double> articlePriceInLocalCurrency{};
  std::optional<std::string> oboloTransactionMode{};
  std::optional<bool> isPaywallEnabledInCountry{};
  std::optional<double> customerBalance{};
  std::optional<std::string> customerName{};
  std::optional<bool> isFacebookLoginEnabled{};
  std::optional<std::string> facebookGraphApiVersion{};
  std::optional<double> minBalance{};
  std::optional<std::string> preLoginText{};
  std::optional<std::string> postLoginText{};
  std::optional<bool> isSIMEnabled{};
  std::optional<bool> isCreditAllowed{};
  std::optional<std::string> articleIdentifier{};
  std::optional<bool> isMeteringAvailable{};
  std::optional<bool> isGift{};
  std::optional<PaywallSettingsSet> paywallSettings{};
  std::optional<CustomerInfoSet> customerInfo{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("oboloBidId", self.oboloBidId);
    visit("publisherId", self.publisherId);
    visit("publisherCurrency", self.publisherCurrency);
    visit("isImplicitUnlock", self.isImplicitUnlock);
    visit("articleId", self.articleId);
    visit("ipAddress", self.ipAddress);
    visit("articleActive", self.articleActive);
    visit("unlocked", self.unlocked);
    visit("customerId", self.customerId);
    visit("customerCurrency", self.customerCurrency);
    visit("articlePrice", self.articlePrice);
    visit("articlePriceInLocalCurrency", self.articlePriceInLocalCurrency);
    visit("oboloTransactionMode", self.oboloTransactionMode);
    visit("isPaywallEnabledInCountry", self.isPaywallEnabledInCountry);
    visit("customerBalance", self.customerBalance);
    visit("customerName", self.customerName);
    visit("isFacebookLoginEnabled", self.isFacebookLoginEnabled);
    visit("facebookGraphApiVersion", self.facebookGraphApiVersion);
    visit("minBalance", self.minBalance);
    visit("preLoginText", self.preLoginText);
    visit("postLoginText", self.postLoginText);
    visit("isSIMEnabled", self.isSIMEnabled);
    visit("isCreditAllowed", self.isCreditAllowed);
    visit("articleIdentifier", self.articleIdentifier);
    visit("isMeteringAvailable", self.isMeteringAvailable);
    visit("isGift", self.isGift);
    visit("paywallSettings", self.paywallSettings);
    visit("customerInfo", self.customerInfo);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<DataSet> decode(std::string_view json) { return DecodeRecord<DataSet>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// Answer to the four bid calls: create a logged-out or logged-in bid, customer bid, accept bid.
struct OboloData {
  static constexpr std::string_view kName = "OboloData";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<bool> success{};
  std::optional<std::string> message{};
  std::optional<DataSet> data{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("success", self.success);
    visit("message", self.message);
    visit("data", self.data);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<OboloData> decode(std::string_view json) { return DecodeRecord<OboloData>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// Answer to the token refresh.
struct NextTokenData {
  static constexpr std::string_view kName = "NextTokenData";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<bool> success{};
  std::optional<std::string> message{};
  std::optional<CustomerInfoSet> data{};
  std::optional<std::int64_t> statusCode{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("success", self.success);
    visit("message", self.message);
    visit("data", self.data);
    visit("statusCode", self.statusCode);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<NextTokenData> decode(std::string_view json) { return DecodeRecord<NextTokenData>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// The wallet's balance, the last article bought and recommendations.
struct BADataSet {
  static constexpr std::string_view kName = "BADataSet";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<double> balance{};
  std::optional<std::string> currency{};
  std::optional<std::int64_t> customerId{};
  std::optional<std::string> lastArticleCurrency{};
  std::optional<std::string> lastArticleMode{};
  std::optional<double> lastArticlePrice{};
  std::optional<std::string> lastArticlePublisher{};
  std::optional<std::string> lastArticleTitle{};
  std::optional<std::vector<Recommendation>> recommendations{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("balance", self.balance);
    visit("currency", self.currency);
    visit("customerId", self.customerId);
    visit("lastArticleCurrency", self.lastArticleCurrency);
    visit("lastArticleMode", self.lastArticleMode);
    visit("lastArticlePrice", self.lastArticlePrice);
    visit("lastArticlePublisher", self.lastArticlePublisher);
    visit("lastArticleTitle", self.lastArticleTitle);
    visit("recommendations", self.recommendations);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<BADataSet> decode(std::string_view json) { return DecodeRecord<BADataSet>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};

// Answer to the balance-and-recommendations call.
struct BalanceAndArticleData {
  static constexpr std::string_view kName = "BalanceAndArticleData";

  // The answer's members, named as its JSON keys; absent when the service left
  // one out or sent null.
  std::optional<bool> success{};
  std::optional<std::string> message{};
  std::optional<std::int64_t> statusCode{};
  std::optional<BADataSet> data{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("success", self.success);
    visit("message", self.message);
    visit("statusCode", self.statusCode);
    visit("data", self.data);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<BalanceAndArticleData> decode(std::string_view json) { return DecodeRecord<BalanceAndArticleData>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }
};
// Answer to the logout call. Only an answer that holds `data` as a boolean
// decodes; a logout answered without it goes to the caller's onFailure.
class LogoutData {
 public:
  static constexpr std::string_view kName = "LogoutData";

  // A logout answer, memberwise.
  LogoutData(std::optional<bool> success, std::optional<std::string> message, bool data,
             std::optional<std::int64_t> statusCode)
      : success(success), message(std::move(message)), data(data), statusCode(statusCode) {}

  // The answer's members, named as its JSON keys; `data`, whether the device
  // was logged out, is required.
  std::optional<bool> success{};
  std::optional<std::string> message{};
  bool data;
  std::optional<std::int64_t> statusCode{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("success", self.success);
    visit("message", self.message);
    visit("data", self.data);
    visit("statusCode", self.statusCode);
  }

  // From the service\'s JSON by the rules above; back to JSON; and every member,
  // for the kit\'s diagnostic lines.
  static DecodeResult<LogoutData> decode(std::string_view json) { return DecodeRecord<LogoutData>(json); }
  std::string encode() const { return EncodeRecord(*this); }
  std::string description() const { return DescribeRecord(*this); }

 private:
  friend struct JsonRecordAccess;
  LogoutData() : data(false) {}
};

}  // namespace obolo

#endif  // OBOLO_NETWORK_RESPONSE_RECORDS_H_
