// The records a sandbox keeps about its world: publishers, their articles,
// customers with their wallets, bids, and the credentials handed to a reader's
// device. They are plain values: the sandbox copies them in and out, so a
// caller never holds a reference into the sandbox's state.

#ifndef OBOLO_SANDBOX_WORLD_TYPES_H_
#define OBOLO_SANDBOX_WORLD_TYPES_H_

#include <cstdint>
#include <optional>
#include <string>

namespace obolo::sandbox {

struct Publisher {
  std::int64_t id = 0;
  // The publisher's secret the kit sends with a logged-in bid.
  std::string accessKey;
  // The host name the kit sends as `publisherDomain`; bids find the publisher by it.
  std::string domain;
  std::string name;
  std::string currency = "EUR";
};

// How an accepted bid is settled. The kit reveals an article that a customer
// already owns at once in any mode but "normal".
inline constexpr char kNormalMode[] = "normal";
inline constexpr char kInstantMode[] = "instant";

struct Article {
  std::int64_t id = 0;
  std::int64_t publisherId = 0;
  // The article's address: bids find the article by this exact text.
  std::string url;
  std::string title;
  std::string category;
  std::string author;
  std::string publishedDate;  // ISO 8601 text, shown in recommendations
  // Price in the publisher's currency.
  double price = 0.0;
  // Price in `currency`, the reader's currency: what a purchase takes from the
  // wallet and what the kit compares with the balance.
  double priceInLocalCurrency = 0.0;
  std::string currency = "EUR";
  std::string transactionMode = kNormalMode;
  // The paywall applies only when both are true.
  bool paywallEnabledInCountry = true;
  bool active = true;
};

struct Customer {
  std::int64_t id = 0;
  std::string email;
  std::string name;
  double balance = 0.0;
  std::string currency = "EUR";
  // With credit a purchase may take the balance below zero.
  bool creditAllowed = false;
  std::string homeCountry = "DE";
  std::string createdDate = "2024-01-15T09:30:00Z";
};

struct Bid {
  std::int64_t id = 0;
  std::int64_t articleId = 0;
  std::int64_t publisherId = 0;
  // Set by a logged-in bid, a customer bid or an accepted bid.
  std::optional<std::int64_t> customerId;
  bool accepted = false;
};

// What a login hands back to the kit: the login page posts these two keys, and
// a customer bid with them completes the login. The login key works once.
struct LoginKeys {
  std::string deviceKey;
  std::string loginKey;
};

// A logged-in device's credentials, as the kit stores them after a login.
struct SessionKeys {
  std::string deviceKey;
  std::string accessToken;
  std::string refreshToken;
  std::int64_t customerId = 0;
  std::string email;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_WORLD_TYPES_H_
