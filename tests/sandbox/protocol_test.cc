// The service's protocol over real sockets: the whole purchase in the order the
// kit runs it, and each call's answers for the cases the kit tells apart.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using ProtocolTest = SandboxTest;

TEST_F(ProtocolTest, WholePurchaseFromLoggedOutBidToLogoutRunsInOrder) {
  // 1. Logged-out bid: the card's data, no customer.
  json bid = loggedOutBid(seed::kNormalArticleUrl);
  ASSERT_TRUE(bid["oboloBidId"].is_number_integer());
  EXPECT_EQ(bid["publisherId"], seed::kPublisherId);
  EXPECT_EQ(bid["unlocked"], false);
  EXPECT_FALSE(bid.contains("customerInfo"));
  EXPECT_FALSE(bid.contains("customerBalance"));
  const std::int64_t first_bid = bid["oboloBidId"];

  // 2. Customer bid with the keys of a login: the session comes back.
  json info = logIn(seed::kReaderEmail, first_bid);
  ASSERT_TRUE(info["accessToken"].is_string());
  ASSERT_TRUE(info["refreshToken"].is_string());
  ASSERT_TRUE(info["deviceKey"].is_string());
  EXPECT_EQ(info["customer"]["id"], seed::kReaderId);
  EXPECT_EQ(info["customer"]["email"], seed::kReaderEmail);
  EXPECT_TRUE(info["customer"]["createdDate"].is_string());
  const std::string device_key = info["deviceKey"];
  const std::string access_token = info["accessToken"];
  const std::string refresh_token = info["refreshToken"];
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(device_key), false);
  EXPECT_EQ(sandbox_.bid(first_bid)->customerId, seed::kReaderId);

  // 3. Logged-in bid with the bearer: the reader's wallet is in the bid.
  WireResponse in_bid = client_.call("POST", kCreateLoggedInBidPath,
                                     LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), access_token);
  ASSERT_EQ(in_bid.status, 200) << in_bid.body;
  json data = in_bid.json()["data"];
  EXPECT_GT(data["oboloBidId"].get<std::int64_t>(), first_bid);
  EXPECT_EQ(data["customerId"], seed::kReaderId);
  EXPECT_EQ(data["customerBalance"], seed::kReaderBalance);
  EXPECT_EQ(data["customerCurrency"], seed::kCurrency);
  EXPECT_EQ(data["isCreditAllowed"], false);
  EXPECT_EQ(data["unlocked"], false);

  // 4. Accept: the balance falls by the price, the article is the reader's.
  WireResponse accepted = client_.call(
      "PUT", kAcceptBidPath, json{{"oboloBidId", data["oboloBidId"]}, {"oboloTransactionMode", "normal"}},
      access_token);
  ASSERT_EQ(accepted.status, 200) << accepted.body;
  EXPECT_EQ(accepted.json()["success"], true);
  EXPECT_EQ(accepted.json()["data"]["unlocked"], true);
  EXPECT_DOUBLE_EQ(accepted.json()["data"]["customerBalance"].get<double>(),
                   seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));

  // 5. Token refresh: a new access token for the same device.
  WireResponse refreshed = client_.call(
      "PUT", kNextAccessTokenPath,
      json{{"deviceKey", device_key}, {"email", seed::kReaderEmail}, {"refreshToken", refresh_token}});
  ASSERT_EQ(refreshed.status, 200) << refreshed.body;
  json next = refreshed.json();
  EXPECT_EQ(next["success"], true);
  EXPECT_EQ(next["statusCode"], 200);
  EXPECT_EQ(next["data"]["deviceKey"], device_key);
  EXPECT_EQ(next["data"]["customer"]["id"], seed::kReaderId);
  ASSERT_TRUE(next["data"]["accessToken"].is_string());
  const std::string new_access_token = next["data"]["accessToken"];
  EXPECT_NE(new_access_token, access_token);

  // 6. Balance with recommendations, with the new token.
  WireResponse balance = client_.call(
      "POST", kBalanceAndArticlePath,
      json{{"customerId", seed::kReaderId}, {"publisherId", seed::kPublisherId}}, new_access_token);
  ASSERT_EQ(balance.status, 200) << balance.body;
  json ba = balance.json()["data"];
  EXPECT_DOUBLE_EQ(ba["balance"].get<double>(), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_EQ(ba["currency"], seed::kCurrency);
  EXPECT_EQ(ba["customerId"], seed::kReaderId);
  EXPECT_EQ(ba["lastArticleTitle"], seed::kNormalArticleTitle);
  EXPECT_EQ(ba["lastArticlePrice"], seed::kNormalArticlePrice);
  ASSERT_TRUE(ba["recommendations"].is_array());
  ASSERT_FALSE(ba["recommendations"].empty());
  int read = 0;
  for (const auto& item : ba["recommendations"]) {
    if (item["articleReadByCurrentCustomer"] == true) {
      ++read;
      EXPECT_EQ(item["articleUrl"], seed::kNormalArticleUrl);
      EXPECT_EQ(item["unlocks"], 1);
    }
  }
  EXPECT_EQ(read, 1);

  // 7. Logout: the device's tokens stop working, old and new alike.
  WireResponse logout =
      client_.call("PUT", kLogoutDevicePath, json{{"deviceKey", device_key}, {"email", seed::kReaderEmail}},
                   new_access_token);
  ASSERT_EQ(logout.status, 200) << logout.body;
  EXPECT_EQ(logout.json(),
            (json{{"success", true}, {"message", "Device logged out"}, {"data", true}, {"statusCode", 200}}));
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(device_key), true);

  for (const std::string& token : {access_token, new_access_token}) {
    WireResponse refused = client_.call("POST", kCreateLoggedInBidPath,
                                        LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), token);
    EXPECT_EQ(refused.status, 401);
    EXPECT_EQ(refused.json()["success"], false);
  }
  WireResponse refresh_after_logout = client_.call(
      "PUT", kNextAccessTokenPath,
      json{{"deviceKey", device_key}, {"email", seed::kReaderEmail}, {"refreshToken", refresh_token}});
  EXPECT_EQ(refresh_after_logout.status, 401);
  EXPECT_EQ(refresh_after_logout.json()["statusCode"], 401);
  EXPECT_EQ(refresh_after_logout.json()["success"], false);
}

TEST_F(ProtocolTest, LoggedOutBidDescribesEachSeededArticle) {
  struct Case {
    const char* url;
    bool enabledInCountry;
    bool active;
    const char* mode;
    double price;
    const char* shownPrice;
  };
  const Case cases[] = {
      {seed::kNormalArticleUrl, true, true, "normal", 0.5, "\u20AC0.50"},
      {seed::kInstantArticleUrl, true, true, "instant", 0.2, "\u20AC0.20"},
      {seed::kFreeArticleUrl, false, true, "normal", 0.3, "\u20AC0.30"},
      {seed::kInactiveArticleUrl, true, false, "normal", 0.3, "\u20AC0.30"},
      {seed::kExpensiveArticleUrl, true, true, "normal", 25.0, "\u20AC25.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.url);
    json bid = loggedOutBid(c.url);
    EXPECT_EQ(bid["isPaywallEnabledInCountry"], c.enabledInCountry);
    EXPECT_EQ(bid["articleActive"], c.active);
    EXPECT_EQ(bid["oboloTransactionMode"], c.mode);
    EXPECT_EQ(bid["articlePrice"], c.price);
    EXPECT_EQ(bid["articlePriceInLocalCurrency"], c.price);
    EXPECT_EQ(bid["unlocked"], false);
    // Without a wallet to judge, the card must still offer the unlock.
    EXPECT_EQ(bid["isCreditAllowed"], true);
    json settings = bid["paywallSettings"];
    EXPECT_EQ(settings["obCustomerPrice"], c.shownPrice);
    for (const char* text :
         {"obTitleText", "obPromptText", "obButtonText", "obBalanceText", "obAutoUnlockText"}) {
      ASSERT_TRUE(settings[text].is_string()) << text;
      EXPECT_FALSE(settings[text].get<std::string>().empty()) << text;
    }
    EXPECT_TRUE(settings["showMobileImage"].is_boolean());
    EXPECT_TRUE(settings["showDesktopImage"].is_boolean());
  }
}

TEST_F(ProtocolTest, BidsForUnknownPublishersOrArticlesAreRefusedWithAnEnvelope) {
  struct Case {
    const char* what;
    json body;
  };
  json unknown_domain = BidBody(seed::kNormalArticleUrl);
  unknown_domain["publisherDomain"] = "elsewhere.example";
  json unknown_article = BidBody("https://news.example/no-such-article");
  json no_domain = BidBody(seed::kNormalArticleUrl);
  no_domain.erase("publisherDomain");
  const Case cases[] = {
      {"unknown domain", unknown_domain}, {"unknown article", unknown_article}, {"no domain", no_domain}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WireResponse response = client_.call("POST", kCreateLoggedOutBidPath, c.body);
    json answer = response.json();
    EXPECT_EQ(answer["success"], false);
    ASSERT_TRUE(answer["message"].is_string());
    EXPECT_FALSE(answer["message"].get<std::string>().empty());
    EXPECT_FALSE(answer.contains("data"));
  }
}

TEST_F(ProtocolTest, OwnedArticleIsUnlockedInLaterBidsAndIsNeverChargedTwice) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  ASSERT_TRUE(session);
  auto bid_for = [&](const char* url) {
    return client_
        .call("POST", kCreateLoggedInBidPath, LoggedInBidBody(url, seed::kReaderId), session->accessToken)
        .json()["data"];
  };
  json first = bid_for(seed::kInstantArticleUrl);
  ASSERT_EQ(first["unlocked"], false);
  json accept = {{"oboloBidId", first["oboloBidId"]}, {"oboloTransactionMode", "instant"}};
  ASSERT_EQ(client_.call("PUT", kAcceptBidPath, accept, session->accessToken).status, 200);
  const double after_one = *sandbox_.balance(seed::kReaderEmail);
  EXPECT_DOUBLE_EQ(after_one, seed::kReaderBalance - seed::kInstantArticlePrice);

  json second = bid_for(seed::kInstantArticleUrl);
  EXPECT_EQ(second["unlocked"], true);
  EXPECT_EQ(bid_for(seed::kNormalArticleUrl)["unlocked"], false);

  json again = {{"oboloBidId", second["oboloBidId"]}, {"oboloTransactionMode", "instant"}};
  WireResponse repeat = client_.call("PUT", kAcceptBidPath, again, session->accessToken);
  EXPECT_EQ(repeat.json()["data"]["unlocked"], true);
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), after_one);
}

TEST_F(ProtocolTest, AcceptWithoutEnoughMoneyChangesNothingUnlessCreditIsAllowed) {
  struct Case {
    const char* email;
    const char* url;
    bool succeeds;
    double balance_after;
  };
  const Case cases[] = {
      {seed::kReaderEmail, seed::kExpensiveArticleUrl, false, seed::kReaderBalance},
      {seed::kCreditReaderEmail, seed::kNormalArticleUrl, true, -seed::kNormalArticlePrice},
      {seed::kCreditReaderEmail, seed::kExpensiveArticleUrl, true, -seed::kExpensiveArticlePrice},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.email) + " " + c.url);
    sandbox_.reset();
    auto session = sandbox_.createSession(c.email);
    ASSERT_TRUE(session);
    json bid = client_
                   .call("POST", kCreateLoggedInBidPath, LoggedInBidBody(c.url, session->customerId),
                         session->accessToken)
                   .json()["data"];
    WireResponse response = client_.call(
        "PUT", kAcceptBidPath, json{{"oboloBidId", bid["oboloBidId"]}, {"oboloTransactionMode", "normal"}},
        session->accessToken);
    json answer = response.json();
    EXPECT_EQ(answer["success"], c.succeeds) << response.body;
    if (!c.succeeds) {
      ASSERT_TRUE(answer["message"].is_string());
      EXPECT_NE(answer["message"].get<std::string>().find("nsufficient"), std::string::npos);
    }
    EXPECT_DOUBLE_EQ(*sandbox_.balance(c.email), c.balance_after);
    EXPECT_EQ(sandbox_.ownsArticle(c.email, c.url), c.succeeds);
  }
}

TEST_F(ProtocolTest, AcceptIsRefusedForUnknownBidsOtherCustomersBidsAndAWrongMode) {
  auto reader = sandbox_.createSession(seed::kReaderEmail);
  auto other = sandbox_.createSession(seed::kCreditReaderEmail);
  ASSERT_TRUE(reader && other);
  json bid = client_
                 .call("POST", kCreateLoggedInBidPath,
                       LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), reader->accessToken)
                 .json()["data"];
  struct Case {
    const char* what;
    json body;
    std::string token;
    long status;
  };
  const Case cases[] = {
      {"unknown bid", {{"oboloBidId", 999999}, {"oboloTransactionMode", "normal"}}, reader->accessToken, 404},
      {"another customer's bid", {{"oboloBidId", bid["oboloBidId"]}}, other->accessToken, 403},
      {"wrong mode",
       {{"oboloBidId", bid["oboloBidId"]}, {"oboloTransactionMode", "instant"}},
       reader->accessToken,
       400},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WireResponse response = client_.call("PUT", kAcceptBidPath, c.body, c.token);
    EXPECT_EQ(response.status, c.status);
    EXPECT_EQ(response.json()["success"], false);
    EXPECT_EQ(response.json()["statusCode"], c.status);
  }
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance);
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kCreditReaderEmail), seed::kCreditReaderBalance);
}

TEST_F(ProtocolTest, CustomerBidRefusesLoginKeysThatDoNotHold) {
  const std::int64_t bid_id = loggedOutBid(seed::kNormalArticleUrl)["oboloBidId"];
  auto used = sandbox_.issueLoginKeys(seed::kReaderEmail);
  auto mine = sandbox_.issueLoginKeys(seed::kReaderEmail);
  auto theirs = sandbox_.issueLoginKeys(seed::kCreditReaderEmail);
  ASSERT_TRUE(used && mine && theirs);
  ASSERT_EQ(
      client_
          .call("POST", kCustomerBidPath,
                json{{"deviceKey", used->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", used->loginKey}})
          .status,
      200);

  struct Case {
    const char* what;
    json body;
  };
  const Case cases[] = {
      {"a login key used before",
       {{"deviceKey", used->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", used->loginKey}}},
      {"another device's login key",
       {{"deviceKey", mine->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", theirs->loginKey}}},
      {"an unknown login key",
       {{"deviceKey", mine->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", "lk-0"}}},
      {"an unknown bid",
       {{"deviceKey", mine->deviceKey}, {"oboloBidId", 424242}, {"loginToken", mine->loginKey}}},
      {"no members at all", json::object()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WireResponse response = client_.call("POST", kCustomerBidPath, c.body);
    json answer = response.json();
    EXPECT_EQ(answer["success"], false) << response.body;
    EXPECT_TRUE(answer["message"].is_string());
    EXPECT_FALSE(answer.contains("data"));
  }
  // The refused keys were not spent: the right pair still logs in.
  WireResponse good = client_.call(
      "POST", kCustomerBidPath,
      json{{"deviceKey", mine->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", mine->loginKey}});
  EXPECT_EQ(good.json()["data"]["customerInfo"]["customer"]["id"], seed::kReaderId);
}

TEST_F(ProtocolTest, CustomerBidOnAnOwnedArticleSaysUnlockedWithTheBalance) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  json owned_bid = client_
                       .call("POST", kCreateLoggedInBidPath,
                             LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), session->accessToken)
                       .json()["data"];
  client_.call("PUT", kAcceptBidPath, json{{"oboloBidId", owned_bid["oboloBidId"]}}, session->accessToken);

  const std::int64_t bid_id = loggedOutBid(seed::kNormalArticleUrl)["oboloBidId"];
  auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail);
  json data =
      client_
          .call("POST", kCustomerBidPath,
                json{{"deviceKey", keys->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", keys->loginKey}})
          .json()["data"];
  EXPECT_EQ(data["unlocked"], true);
  EXPECT_DOUBLE_EQ(data["customerBalance"].get<double>(), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_EQ(data["customerInfo"]["loginKey"], keys->loginKey);
  EXPECT_EQ(data["customerInfo"]["deviceKey"], keys->deviceKey);
}

TEST_F(ProtocolTest, TokenRefreshIsRefusedWith401UnlessDeviceEmailAndTokenBelongTogether) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  auto other = sandbox_.createSession(seed::kReaderEmail);
  auto expired = sandbox_.createSession(seed::kReaderEmail, std::chrono::hours(1), std::chrono::seconds(-60));
  ASSERT_TRUE(session && other && expired);
  struct Case {
    const char* what;
    std::string deviceKey;
    std::string email;
    std::string refreshToken;
  };
  const Case cases[] = {
      {"another device", other->deviceKey, seed::kReaderEmail, session->refreshToken},
      {"another e-mail", session->deviceKey, seed::kCreditReaderEmail, session->refreshToken},
      {"an access token", session->deviceKey, seed::kReaderEmail, session->accessToken},
      {"an expired refresh token", expired->deviceKey, seed::kReaderEmail, expired->refreshToken},
      {"a garbage token", session->deviceKey, seed::kReaderEmail, "not-a-token"},
      {"no token", session->deviceKey, seed::kReaderEmail, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WireResponse response =
        client_.call("PUT", kNextAccessTokenPath,
                     json{{"deviceKey", c.deviceKey}, {"email", c.email}, {"refreshToken", c.refreshToken}});
    EXPECT_EQ(response.status, 401);
    json answer = response.json();
    EXPECT_EQ(answer["success"], false);
    EXPECT_EQ(answer["statusCode"], 401);
    EXPECT_TRUE(answer["message"].is_string());
  }
  // The e-mail is compared as an address, without regard to case.
  WireResponse upper = client_.call("PUT", kNextAccessTokenPath,
                                    json{{"deviceKey", session->deviceKey},
                                         {"email", "READER@example.com"},
                                         {"refreshToken", session->refreshToken}});
  EXPECT_EQ(upper.status, 200) << upper.body;
}

TEST_F(ProtocolTest, ExpiredAccessTokenIsRefusedAndARefreshedOneIsAccepted) {
  auto session = sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(1));
  ASSERT_TRUE(session);
  const json body = LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId);
  WireResponse refused = client_.call("POST", kCreateLoggedInBidPath, body, session->accessToken);
  EXPECT_EQ(refused.status, 401);
  EXPECT_NE(refused.json()["message"].get<std::string>().find("expired"), std::string::npos);

  json next = client_
                  .call("PUT", kNextAccessTokenPath,
                        json{{"deviceKey", session->deviceKey},
                             {"email", session->email},
                             {"refreshToken", session->refreshToken}})
                  .json();
  ASSERT_TRUE(next["data"]["accessToken"].is_string()) << next.dump();
  WireResponse accepted = client_.call("POST", kCreateLoggedInBidPath, body, next["data"]["accessToken"]);
  EXPECT_EQ(accepted.status, 200) << accepted.body;
  EXPECT_EQ(accepted.json()["data"]["customerId"], seed::kReaderId);
}

TEST_F(ProtocolTest, LoggedInBidIsRefusedForAnotherCustomerIdOrAWrongAccessKey) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  json wrong_customer = LoggedInBidBody(seed::kNormalArticleUrl, seed::kCreditReaderId);
  json wrong_key = LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId);
  wrong_key["accessKey"] = "stolen-key";
  for (const json& body : {wrong_customer, wrong_key}) {
    WireResponse response = client_.call("POST", kCreateLoggedInBidPath, body, session->accessToken);
    EXPECT_EQ(response.status, 403) << body.dump();
    EXPECT_EQ(response.json()["success"], false);
  }
  // A client that has no customer id stored sends none: the token decides.
  json no_customer = LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId);
  no_customer.erase("customerId");
  WireResponse response = client_.call("POST", kCreateLoggedInBidPath, no_customer, session->accessToken);
  EXPECT_EQ(response.json()["data"]["customerId"], seed::kReaderId);
}

TEST_F(ProtocolTest, MalformedOrWronglyTypedBodiesAre400OnEveryRoute) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  struct Route {
    const char* method;
    const char* path;
    const char* typed_member;  // a member the route reads, sent here as the wrong JSON type
  };
  const Route routes[] = {
      {"POST", kCreateLoggedOutBidPath, R"({"articleUrl":5})"},
      {"POST", kCreateLoggedInBidPath, R"({"customerId":"101"})"},
      {"POST", kCustomerBidPath, R"({"oboloBidId":"12"})"},
      {"PUT", kNextAccessTokenPath, R"({"refreshToken":true})"},
      {"PUT", kAcceptBidPath, R"({"oboloBidId":12.5})"},
      {"POST", kBalanceAndArticlePath, R"({"publisherId":[7]})"},
      {"PUT", kLogoutDevicePath, R"({"deviceKey":{}})"},
  };
  const std::vector<std::string> malformed = {"{", "[]", "\"text\"", "null", "{\"a\":1}}", "\xff\xfe"};
  for (const Route& route : routes) {
    SCOPED_TRACE(route.path);
    std::vector<std::string> bodies = malformed;
    bodies.push_back(route.typed_member);
    for (const std::string& body : bodies) {
      WireResponse response = client_.call(route.method, route.path, body, session->accessToken);
      EXPECT_EQ(response.status, 400) << body;
      json answer = response.json();
      EXPECT_EQ(answer["success"], false) << body;
      EXPECT_EQ(answer["statusCode"], 400) << body;
    }
  }
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance);
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session->deviceKey), false);
}

TEST_F(ProtocolTest, UnknownRoutesAndMethodsGetAJsonErrorEnvelope) {
  struct Case {
    const char* method;
    const char* path;
  };
  const Case cases[] = {{"POST", "/v2/obid/noSuchCall"},
                        {"GET", kAcceptBidPath},
                        {"POST", kAcceptBidPath},
                        {"DELETE", kLogoutDevicePath}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.method) + " " + c.path);
    WireResponse response = client_.call(c.method, c.path, std::string("{}"));
    EXPECT_GE(response.status, 400);
    EXPECT_EQ(response.json()["success"], false) << response.body;
  }
}

}  // namespace
}  // namespace obolo::sandbox::testing
