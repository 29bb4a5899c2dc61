// The four calls that need a bearer token refuse every token that does not
// hold with HTTP 401 and an error envelope, and change nothing.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sandbox/jwt.h"
#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using BearerTest = SandboxTest;

// `token` with its payload replaced by `payload`, the signature kept.
std::string WithPayload(const std::string& token, const std::string& payload) {
  const auto first = token.find('.');
  const auto second = token.find('.', first + 1);
  return token.substr(0, first + 1) + Base64UrlEncode(payload) + token.substr(second);
}

TEST_F(BearerTest, EveryBearerRouteRefusesTokensThatDoNotHold) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  auto expired = sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-1), std::chrono::hours(1));
  auto logged_out = sandbox_.createSession(seed::kReaderEmail);
  ASSERT_TRUE(session && expired && logged_out);
  ASSERT_EQ(
      client_
          .call("PUT", kLogoutDevicePath, json{{"deviceKey", logged_out->deviceKey}}, logged_out->accessToken)
          .status,
      200);

  Sandbox elsewhere;
  ASSERT_TRUE(elsewhere.start()) << elsewhere.error();
  auto foreign = elsewhere.createSession(seed::kReaderEmail);
  ASSERT_TRUE(foreign);

  // A payload naming another customer under the original signature.
  const std::string forged =
      WithPayload(session->accessToken,
                  R"({"jti":"x","token_use":"access","sub":"102","exp":4102444800,"iat":0,"auth_time":0})");
  const std::string unsigned_token = Base64UrlEncode(R"({"alg":"none","typ":"JWT"})") + "." +
                                     Base64UrlEncode(R"({"token_use":"access","exp":4102444800})") + ".";

  struct Bearer {
    const char* what;
    std::vector<std::string> headers;  // the Authorization line, or none
  };
  const Bearer bearers[] = {
      {"no Authorization field", {}},
      {"the scheme alone", {"Authorization: Bearer "}},
      {"another scheme", {"Authorization: Basic " + session->accessToken}},
      {"garbage", {"Authorization: Bearer abc"}},
      {"an expired token", {"Authorization: Bearer " + expired->accessToken}},
      {"a refresh token", {"Authorization: Bearer " + session->refreshToken}},
      {"a logged-out device's token", {"Authorization: Bearer " + logged_out->accessToken}},
      {"another sandbox's token", {"Authorization: Bearer " + foreign->accessToken}},
      {"a forged payload", {"Authorization: Bearer " + forged}},
      {"an unsigned token", {"Authorization: Bearer " + unsigned_token}},
  };
  struct Route {
    const char* method;
    const char* path;
    json body;
  };
  const std::int64_t bid_id = loggedOutBid(seed::kNormalArticleUrl)["oboloBidId"];
  const Route routes[] = {
      {"POST", kCreateLoggedInBidPath, LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId)},
      {"PUT", kAcceptBidPath, {{"oboloBidId", bid_id}, {"oboloTransactionMode", "normal"}}},
      {"POST",
       kBalanceAndArticlePath,
       {{"customerId", seed::kReaderId}, {"publisherId", seed::kPublisherId}}},
      {"PUT", kLogoutDevicePath, {{"deviceKey", session->deviceKey}, {"email", seed::kReaderEmail}}},
  };

  for (const Route& route : routes) {
    for (const Bearer& bearer : bearers) {
      SCOPED_TRACE(std::string(route.path) + " with " + bearer.what);
      WireRequest request;
      request.method = route.method;
      request.url = sandbox_.baseUrl() + route.path;
      request.caFile = sandbox_.caFile();
      request.headers = {"Content-Type: Application/json", "Accept: application/json"};
      request.headers.insert(request.headers.end(), bearer.headers.begin(), bearer.headers.end());
      request.body = route.body.dump();
      WireResponse response = Send(request);
      EXPECT_EQ(response.status, 401);
      json answer = response.json();
      EXPECT_EQ(answer["success"], false) << response.body;
      EXPECT_EQ(answer["statusCode"], 401) << response.body;
      ASSERT_TRUE(answer["message"].is_string()) << response.body;
      EXPECT_FALSE(answer["message"].get<std::string>().empty());
    }
  }

  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance);
  EXPECT_FALSE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session->deviceKey), false);
  // The good token still works after all that.
  EXPECT_EQ(client_
                .call("POST", kCreateLoggedInBidPath,
                      LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), session->accessToken)
                .status,
            200);
}

TEST_F(BearerTest, LoggingOutOneDeviceLeavesTheCustomersOtherDevicesLoggedIn) {
  auto phone = sandbox_.createSession(seed::kReaderEmail);
  auto tablet = sandbox_.createSession(seed::kReaderEmail);
  ASSERT_TRUE(phone && tablet);
  ASSERT_EQ(client_.call("PUT", kLogoutDevicePath, json{{"deviceKey", phone->deviceKey}}, phone->accessToken)
                .status,
            200);
  const json body = {{"customerId", seed::kReaderId}, {"publisherId", seed::kPublisherId}};
  EXPECT_EQ(client_.call("POST", kBalanceAndArticlePath, body, phone->accessToken).status, 401);
  EXPECT_EQ(client_.call("POST", kBalanceAndArticlePath, body, tablet->accessToken).status, 200);
}

TEST_F(BearerTest, ACustomerCannotLogOutAnotherCustomersDevice) {
  auto reader = sandbox_.createSession(seed::kReaderEmail);
  auto other = sandbox_.createSession(seed::kCreditReaderEmail);
  WireResponse response =
      client_.call("PUT", kLogoutDevicePath, json{{"deviceKey", reader->deviceKey}}, other->accessToken);
  EXPECT_EQ(response.status, 403);
  EXPECT_EQ(response.json()["success"], false);
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(reader->deviceKey), false);
}

}  // namespace
}  // namespace obolo::sandbox::testing
