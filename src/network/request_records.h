// The records the kit fills to ask the service for something, and the body map
// each becomes on the wire.
//
// Every member starts at its default (the empty text, 0, false). A body map
// leaves out empty texts and zero integers and always carries booleans, so a
// member the caller never set is never sent, but a negative integer is.

#ifndef OBOLO_NETWORK_REQUEST_RECORDS_H_
#define OBOLO_NETWORK_REQUEST_RECORDS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace obolo {

// A request body: keys in the order the record's members were visited.
class BodyMap {
 public:
  // A value in the body: a text, an integer or a boolean.
  using Value = std::variant<std::string, std::int64_t, bool>;

  // Puts a text in unless it is empty.
  void putText(std::string_view key, const std::string& value);
  // Puts an integer in unless it is 0.
  void putInteger(std::string_view key, std::int64_t value);
  // Always puts a boolean in.
  void putBool(std::string_view key, bool value);

  // The keys and values in order, and whether there are none.
  const std::vector<std::pair<std::string, Value>>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }

  // One compact JSON object; "{}" when empty.
  std::string json() const;
  // The map in dictionary notation for the kit's log lines:
  // ["articleUrl": "https://news.example/a/1", "isSIMEnabled": false]; [:] when empty.
  std::string description() const;

 private:
  std::vector<std::pair<std::string, Value>> entries_;
};

// Body of both create-bid calls.
class CreateLoggedBidParam {
 public:
  static constexpr std::string_view kTypeName = "CreateLoggedBidParam";

  // The article, the publisher and the reader as the service knows them;
  // ipAddress and userAgent carry the kit's fixed texts.
  std::string accessKey;
  std::string articleIdentifier;
  std::string articleUrl;
  std::string category;
  std::int64_t customerId = 0;
  std::string giftCode;
  std::string ipAddress;
  bool isCustomerLoggedIn = false;
  bool isSIMEnabled = false;
  std::int64_t publisherAsk = 0;
  std::string publisherCustomerId;
  std::string publisherDomain;
  std::string simplifiedUrl;
  std::string userAgent;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// Body of the customer bid, which completes a login.
class CustomerBidParam {
 public:
  static constexpr std::string_view kTypeName = "CustomerBidParam";

  // The device key and login key (loginToken) the login page handed over, and
  // the bid the login completes.
  std::string deviceKey;
  std::int64_t oboloBidId = 0;
  std::string loginToken;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// Body of the token refresh.
class NextTokenParam {
 public:
  static constexpr std::string_view kTypeName = "NextTokenParam";

  // The reader's session: device key, e-mail and refresh token.
  std::string deviceKey;
  std::string email;
  std::string refreshToken;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// Body of the accept bid, which pays for the article.
class AcceptBidParam {
 public:
  static constexpr std::string_view kTypeName = "AcceptBidParam";

  // The bid to pay for and its transaction mode, both as the bid gave them.
  std::int64_t oboloBidId = 0;
  std::string oboloTransactionMode;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// Body of the balance-and-recommendations call.
class BalanceAndArticleParam {
 public:
  static constexpr std::string_view kTypeName = "BalanceAndArticleParam";

  // The reader, the last bid and the publisher.
  std::int64_t customerId = 0;
  std::int64_t oboloBidId = 0;
  std::int64_t publisherId = 0;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// Body of the logout call.
class LogoutParam {
 public:
  static constexpr std::string_view kTypeName = "LogoutParam";

  // The device to log out and the reader's e-mail.
  std::string deviceKey;
  std::string email;

  // The body on the wire, without the members left at their defaults.
  BodyMap bodyMap() const;
};

// The default description of a request record: its type name qualified by the
// module name, e.g. "Obolo_iOS_SDK.CustomerBidParam".
std::string ModuleQualifiedName(std::string_view typeName);

}  // namespace obolo

#endif  // OBOLO_NETWORK_REQUEST_RECORDS_H_
