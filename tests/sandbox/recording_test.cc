// What the sandbox records of each request: what a test of the kit checks on
// the wire.

#include <gtest/gtest.h>

#include <string>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using RecordingTest = SandboxTest;

WireRequest Request(const Sandbox& sandbox, const std::string& method, const std::string& path,
                    std::vector<std::string> headers, std::string body) {
  WireRequest request;
  request.method = method;
  request.url = sandbox.baseUrl() + path;
  request.caFile = sandbox.caFile();
  request.headers = std::move(headers);
  request.body = std::move(body);
  return request;
}

TEST_F(RecordingTest, HeaderNamesKeepTheirCaseAndBodiesTheirExactText) {
  const std::string body = "{\"oboloBidId\":12,  \"oboloTransactionMode\":\"normal\"}";
  Send(Request(sandbox_, "PUT", kAcceptBidPath,
               {"Content-Type: Application/json", "Accept: application/json", "Authorization: Bearer t0ken"},
               body));
  Send(Request(sandbox_, "POST", kCreateLoggedInBidPath,
               {"content-type: application/json", "X-Padded: value   ", "Authorization: Bearer "}, "{}"));

  auto requests = sandbox_.requests();
  ASSERT_EQ(requests.size(), 2u);

  const RecordedRequest& accept = requests[0];
  EXPECT_EQ(accept.method, "PUT");
  EXPECT_EQ(accept.path, kAcceptBidPath);
  EXPECT_EQ(accept.body, body);
  EXPECT_EQ(accept.headerExactly("Content-Type"), "Application/json");
  EXPECT_EQ(accept.headerExactly("content-type"), std::nullopt);
  EXPECT_EQ(accept.headerExactly("Accept"), "application/json");
  EXPECT_EQ(accept.headerExactly("Authorization"), "Bearer t0ken");

  const RecordedRequest& bid = requests[1];
  EXPECT_EQ(bid.method, "POST");
  EXPECT_EQ(bid.headerExactly("content-type"), "application/json");
  EXPECT_EQ(bid.headerExactly("Content-Type"), std::nullopt);
  EXPECT_EQ(bid.header("CONTENT-TYPE"), "application/json");
  EXPECT_EQ(bid.headerExactly("X-Padded"), "value");
  EXPECT_EQ(bid.headerExactly("Authorization"), "Bearer");
  EXPECT_EQ(bid.header("Accept-Encoding"), std::nullopt);
  // Only what the client sent: nothing the server adds for itself.
  for (const auto& [name, value] : bid.headers) {
    EXPECT_EQ(name.find("REMOTE_"), std::string::npos) << name;
    EXPECT_EQ(name.find("LOCAL_"), std::string::npos) << name;
  }
}

TEST_F(RecordingTest, TheLoginAddressIsRecordedWithItsRawQuery) {
  const std::string url = sandbox_.loginPageUrl(seed::kPublisherId, 345);
  WireRequest request = Request(sandbox_, "GET", "", {}, "");
  request.url = url;
  WireResponse page = Send(request);
  ASSERT_EQ(page.status, 200);

  auto requests = sandbox_.requestsTo(kLoginPagePath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].path, "/");
  EXPECT_EQ(sandbox_.baseUrl() + "/?" + requests[0].query, url);
  EXPECT_NE(requests[0].query.find("login_publisher_bid_id=345&"), std::string::npos);
}

TEST_F(RecordingTest, ARequestIsRecordedByTheTimeItsAnswerArrives) {
  for (int i = 0; i < 20; ++i) {
    WireResponse response = client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
    ASSERT_EQ(response.status, 200);
    const std::int64_t bid_id = response.json()["data"]["oboloBidId"];
    auto recorded = sandbox_.requestsTo(kCreateLoggedOutBidPath);
    ASSERT_EQ(recorded.size(), static_cast<std::size_t>(i + 1));
    EXPECT_EQ(json::parse(recorded.back().body)["articleUrl"], seed::kNormalArticleUrl);
    EXPECT_TRUE(sandbox_.bid(bid_id).has_value());
  }
}

TEST_F(RecordingTest, RequestsAreKeptInArrivalOrderFilteredByPathAndCleared) {
  client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
  client_.call("PUT", kNextAccessTokenPath, std::string("{}"));
  client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kInstantArticleUrl));
  client_.get(kPublisherLogoPath);
  client_.call("POST", "/not/a/route", std::string("{}"));

  auto all = sandbox_.requests();
  ASSERT_EQ(all.size(), 4u);  // unknown routes are answered, not recorded
  EXPECT_EQ(all[0].path, kCreateLoggedOutBidPath);
  EXPECT_EQ(all[1].path, kNextAccessTokenPath);
  EXPECT_EQ(all[2].path, kCreateLoggedOutBidPath);
  EXPECT_EQ(all[3].path, kPublisherLogoPath);

  auto bids = sandbox_.requestsTo(kCreateLoggedOutBidPath);
  ASSERT_EQ(bids.size(), 2u);
  EXPECT_EQ(json::parse(bids[1].body)["articleUrl"], seed::kInstantArticleUrl);

  sandbox_.clearRequests();
  EXPECT_TRUE(sandbox_.requests().empty());
  client_.call("PUT", kNextAccessTokenPath, std::string("{}"));
  EXPECT_EQ(sandbox_.requests().size(), 1u);
}

}  // namespace
}  // namespace obolo::sandbox::testing
