// The state of one sandbox service and the operations its routes perform on
// it: the catalogue (publishers and articles), customers and their wallets,
// bids, devices, one-time codes, login keys and the tokens issued to devices.
//
// Thread-safe: every operation takes the world's one mutex, so each is atomic
// with respect to the others. Results are copies; nothing returned refers into
// the world. Refusals come back as ApiError values, never as exceptions.

#ifndef OBOLO_SANDBOX_WORLD_H_
#define OBOLO_SANDBOX_WORLD_H_

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/api_error.h"
#include "sandbox/jwt.h"
#include "sandbox/world_types.h"

namespace obolo::sandbox {

// The members of a create-bid request that the service uses.
struct BidRequest {
  std::string articleUrl;
  std::string category;
  std::string publisherDomain;
  std::string publisherCustomerId;
  std::string ipAddress;
  std::string userAgent;
  bool isSIMEnabled = false;
  // Logged-in bids only: the publisher's access key and the customer id the
  // client believes it has (0 when it sent none).
  std::string accessKey;
  std::int64_t customerId = 0;
};

// Whom a verified access token speaks for.
struct Caller {
  std::int64_t customerId = 0;
  std::string deviceKey;
};

// A bid as the service describes it to one reader.
struct BidView {
  Bid bid;
  Article article;
  Publisher publisher;
  std::string ipAddress;
  bool isSIMEnabled = false;
  // The reader, when the bid is bound to one.
  std::optional<Customer> customer;
  // The reader owns the article.
  bool owned = false;
};

struct DeviceView {
  std::int64_t id = 0;
  std::string deviceKey;
  std::string userAgent;
};

struct IssuedTokens {
  std::string accessToken;
  std::string refreshToken;
  std::string idToken;
};

// The answer to a customer bid: the bid for the now known reader and the
// session the login opened on the device.
struct CustomerBidView {
  BidView bid;
  DeviceView device;
  IssuedTokens tokens;
  std::string loginKey;
  std::int64_t customerUnlocks = 0;
};

struct RefreshView {
  Customer customer;
  DeviceView device;
  std::string accessToken;
  std::int64_t customerUnlocks = 0;
};

struct RecommendationView {
  Article article;
  Publisher publisher;
  bool readByCustomer = false;
  std::int64_t visits = 0;       // bids made for the article
  std::int64_t knownVisits = 0;  // of those, bids by a known customer
  std::int64_t unlocks = 0;      // purchases of the article
};

struct BalanceView {
  Customer customer;
  // The article the customer bought last, with its publisher; none before a
  // first purchase.
  std::optional<Article> lastArticle;
  std::optional<Publisher> lastPublisher;
  std::vector<RecommendationView> recommendations;
};

class World {
 public:
  World(std::chrono::seconds access_lifetime, std::chrono::seconds refresh_lifetime);

  // --- Configuration -------------------------------------------------------

  // The `iss` claim of tokens issued from now on.
  void setIssuer(std::string issuer);
  // Lifetimes of tokens issued from now on; zero or negative ones make tokens
  // that are expired when issued.
  void setTokenLifetimes(std::chrono::seconds access, std::chrono::seconds refresh);
  // Forgets everything: catalogue, customers, bids, devices, codes, tokens.
  void clear();

  // --- Catalogue and customers ---------------------------------------------

  // False when the id or the domain is taken. Id 0 gets the next free id.
  bool addPublisher(Publisher publisher);
  // False when the publisher is unknown or the address is taken. Id 0 gets
  // the next free id.
  bool addArticle(Article article);
  // False when the e-mail (compared without regard to case) or the id is
  // taken. Id 0 gets the next free id.
  bool addCustomer(Customer customer);

  std::optional<Customer> customer(std::string_view email) const;
  // None when the customer or the article is unknown.
  std::optional<bool> owns(std::string_view email, std::string_view article_url) const;
  // True for a device that logged out or never completed a login; none for an
  // unknown device key.
  std::optional<bool> isDeviceLoggedOut(std::string_view device_key) const;
  std::optional<Bid> bid(std::int64_t id) const;

  // --- The service's operations ---------------------------------------------

  Outcome<BidView> createLoggedOutBid(const BidRequest& request);
  // Checks a bearer access token: its signature, its expiry, that it is an
  // access token, and that its device has not logged out since.
  Outcome<Caller> authenticate(std::string_view access_token) const;
  Outcome<BidView> createLoggedInBid(const Caller& caller, const BidRequest& request);
  Outcome<CustomerBidView> customerBid(std::string_view device_key, std::int64_t bid_id,
                                       std::string_view login_key);
  Outcome<RefreshView> nextAccessToken(std::string_view device_key, std::string_view email,
                                       std::string_view refresh_token);
  // `mode` empty: the client sent none.
  Outcome<BidView> acceptBid(const Caller& caller, std::int64_t bid_id, std::string_view mode);
  // `customer_id` and `publisher_id` 0: the client sent none.
  Outcome<BalanceView> balanceAndRecommendations(const Caller& caller, std::int64_t customer_id,
                                                 std::int64_t publisher_id) const;
  // `device_key` and `email` empty: the client sent none; the caller's own
  // device is logged out.
  Outcome<bool> logoutDevice(const Caller& caller, std::string_view device_key, std::string_view email);

  // --- Login -----------------------------------------------------------------

  // A new six-digit one-time code for the customer, replacing any earlier one.
  Outcome<std::string> issueOneTimeCode(std::string_view email);
  // A matching code is used up and yields a new device key with a login key.
  Outcome<LoginKeys> verifyOneTimeCode(std::string_view email, std::string_view code);
  std::optional<std::string> lastOneTimeCode(std::string_view email) const;
  // A new device key and a one-time login key for it, as a successful login
  // on the login page yields. None for an unknown e-mail.
  std::optional<LoginKeys> issueLoginKeys(std::string_view email);
  // A new logged-in device for the customer with tokens of the given
  // lifetimes. None for an unknown e-mail.
  std::optional<SessionKeys> createSession(std::string_view email, std::chrono::seconds access_lifetime,
                                           std::chrono::seconds refresh_lifetime);
  // The same with the current lifetimes.
  std::optional<SessionKeys> createSession(std::string_view email);

 private:
  struct CustomerRecord {
    Customer customer;
    std::vector<std::int64_t> purchases;  // article ids, oldest first
  };
  struct BidRecord {
    Bid bid;
    std::string ipAddress;
    std::string userAgent;
    bool isSIMEnabled = false;
  };
  struct DeviceRecord {
    DeviceView view;
    std::int64_t customerId = 0;
    bool loggedIn = false;
  };
  struct LoginKeyRecord {
    std::string deviceKey;
    std::int64_t customerId = 0;
    bool used = false;
  };
  struct Grant {
    std::string deviceKey;
    std::int64_t customerId = 0;
    std::string use;
    bool revoked = false;
  };
  struct ArticleCounters {
    std::int64_t visits = 0;
    std::int64_t knownVisits = 0;
    std::int64_t unlocks = 0;
  };

  // All REQUIRE mutex_ held.
  const CustomerRecord* findCustomer(std::string_view email) const;
  const Article* findArticle(std::string_view url) const;
  bool ownsLocked(const CustomerRecord& record, std::int64_t article_id) const;
  Outcome<BidView> makeBid(const BidRequest& request, std::optional<std::int64_t> customer_id);
  BidView viewOf(const BidRecord& record) const;
  LoginKeys newLoginKeys(const CustomerRecord& record);
  std::string issueToken(const CustomerRecord& record, const std::string& device_key, const char* use,
                         std::chrono::seconds lifetime);
  IssuedTokens issueSession(const CustomerRecord& record, const std::string& device_key,
                            std::chrono::seconds access_lifetime, std::chrono::seconds refresh_lifetime);
  DeviceRecord& newDevice(std::int64_t customer_id, std::string user_agent);

  const TokenSigner signer_;
  mutable std::mutex mutex_;
  std::string issuer_ = "obolo-sandbox";
  std::chrono::seconds access_lifetime_;
  std::chrono::seconds refresh_lifetime_;

  std::map<std::int64_t, Publisher> publishers_;
  std::map<std::int64_t, Article> articles_;
  std::map<std::int64_t, ArticleCounters> counters_;
  std::map<std::int64_t, CustomerRecord> customers_;
  std::map<std::string, std::int64_t, std::less<>> customer_by_email_;  // lower-case e-mail
  std::map<std::int64_t, BidRecord> bids_;
  std::map<std::string, DeviceRecord, std::less<>> devices_;
  std::map<std::string, LoginKeyRecord, std::less<>> login_keys_;
  std::map<std::string, std::string, std::less<>> one_time_codes_;  // lower-case e-mail -> code
  std::map<std::string, Grant, std::less<>> grants_;                // jti -> grant
  std::int64_t next_bid_id_ = 1001;
  std::int64_t next_device_id_ = 1;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_WORLD_H_
