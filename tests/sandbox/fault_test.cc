// Faults as a client sees them, and that they replace answers without
// touching the sandbox's state.

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using FaultTest = SandboxTest;

class HttpFaultTest : public SandboxTest {
 protected:
  HttpFaultTest() : SandboxTest(PlainHttp()) {}
  static SandboxOptions PlainHttp() {
    SandboxOptions options;
    options.https = false;
    return options;
  }
};

TEST_F(FaultTest, EachReplacingFaultReachesTheClientAsDescribed) {
  struct Case {
    const char* what;
    const char* path;
    Fault fault;
    long status;
    // Checks the body; the content type is given for checks that need it.
    std::function<void(const WireResponse&)> check;
  };
  Fault refusal = Fault::Once(FaultKind::kFailureWithMessage);
  refusal.message = "Bid expired";
  Fault custom = Fault::Custom(418, R"({"data":{"recommendations":[{"articleId":"x"}]}})");
  const Case cases[] = {
      {"server error", kBalanceAndArticlePath, Fault::Once(FaultKind::kServerError), 500,
       [](const WireResponse& r) { EXPECT_EQ(r.body, "{}"); }},
      {"HTML error page", kCreateLoggedOutBidPath, Fault::Once(FaultKind::kHtmlErrorPage), 502,
       [](const WireResponse& r) {
         EXPECT_EQ(r.contentType.rfind("text/html", 0), 0u) << r.contentType;
         EXPECT_TRUE(r.json().is_discarded());
         EXPECT_NE(r.body.find("<html>"), std::string::npos);
       }},
      {"malformed JSON", kAcceptBidPath, Fault::Once(FaultKind::kMalformedJson), 200,
       [](const WireResponse& r) {
         EXPECT_FALSE(r.body.empty());
         EXPECT_TRUE(r.json().is_discarded());
       }},
      {"wrong type in a bid", kCreateLoggedOutBidPath, Fault::Once(FaultKind::kWrongType), 200,
       [](const WireResponse& r) { EXPECT_TRUE(r.json()["data"]["oboloBidId"].is_string()) << r.body; }},
      {"wrong type in a token refresh", kNextAccessTokenPath, Fault::Once(FaultKind::kWrongType), 200,
       [](const WireResponse& r) { EXPECT_TRUE(r.json()["data"]["deviceId"].is_string()) << r.body; }},
      {"wrong type in a balance", kBalanceAndArticlePath, Fault::Once(FaultKind::kWrongType), 200,
       [](const WireResponse& r) { EXPECT_TRUE(r.json()["data"]["balance"].is_string()) << r.body; }},
      {"wrong type in a logout", kLogoutDevicePath, Fault::Once(FaultKind::kWrongType), 200,
       [](const WireResponse& r) { EXPECT_EQ(r.json()["data"], "true") << r.body; }},
      {"failure with a message", kCustomerBidPath, refusal, 200,
       [](const WireResponse& r) {
         EXPECT_EQ(r.json(), (json{{"success", false}, {"message", "Bid expired"}}));
       }},
      {"failure without a message", kCreateLoggedInBidPath, Fault::Once(FaultKind::kFailureWithoutMessage),
       200,
       [](const WireResponse& r) {
         EXPECT_EQ(r.json(), (json{{"success", false}}));
       }},
      {"empty body", kLogoutDevicePath, Fault::Once(FaultKind::kEmptyBody), 200,
       [](const WireResponse& r) {
         EXPECT_EQ(r.code, CURLE_OK);
         EXPECT_EQ(r.body, "");
       }},
      {"custom answer", kBalanceAndArticlePath, custom, 418,
       [](const WireResponse& r) {
         EXPECT_EQ(r.body, R"({"data":{"recommendations":[{"articleId":"x"}]}})");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    sandbox_.setFault(c.path, c.fault);
    const char* method =
        std::string(c.path).find("/v1/") == 0 || std::string(c.path) == kAcceptBidPath ? "PUT" : "POST";
    WireResponse response = client_.call(method, c.path, std::string("{}"));
    EXPECT_EQ(response.status, c.status) << response.error;
    c.check(response);
    // Once means once: the route answers normally again.
    WireResponse after = client_.call(method, c.path, std::string("{}"));
    EXPECT_TRUE(after.json().is_object()) << after.body;
    EXPECT_TRUE(after.json().contains("success")) << after.body;
  }
}

TEST_F(HttpFaultTest, ClosedConnectionGivesThePlainHttpClientNoStatusLineAtAll) {
  sandbox_.setFault(kAcceptBidPath, Fault::Once(FaultKind::kCloseWithoutResponse));
  WireResponse response = client_.call("PUT", kAcceptBidPath, std::string("{}"));
  EXPECT_EQ(response.code, CURLE_GOT_NOTHING) << response.error;
  EXPECT_EQ(response.status, 0);
  EXPECT_EQ(response.body, "");
  // The request was still received and recorded.
  EXPECT_EQ(sandbox_.requestsTo(kAcceptBidPath).size(), 1u);
  // And the next connection is served as usual.
  EXPECT_EQ(client_.call("PUT", kAcceptBidPath, std::string("{}")).status, 401);
}

TEST_F(FaultTest, ClosedConnectionGivesTheHttpsClientNoResponse) {
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Once(FaultKind::kCloseWithoutResponse));
  WireResponse response = client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
  EXPECT_NE(response.code, CURLE_OK);
  EXPECT_EQ(response.status, 0);
  EXPECT_EQ(response.body, "");
  EXPECT_EQ(client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl)).status, 200);
}

TEST_F(FaultTest, ClosedConnectionFailsOnceEvenForAClientThatPoolsConnections) {
  // One easy handle for every call, as a pooling client keeps its connections.
  // libcurl repeats a request whose reused connection closed without an
  // answer, so a fault on a reused connection would go unseen.
  CURL* easy = curl_easy_init();
  ASSERT_NE(easy, nullptr);
  const std::string url = sandbox_.baseUrl() + kCreateLoggedOutBidPath;
  const std::string body = BidBody(seed::kNormalArticleUrl).dump();
  std::string sink;
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_CAINFO, sandbox_.caFile().c_str());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.c_str());
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, 20L);
  curl_easy_setopt(
      easy, CURLOPT_WRITEFUNCTION, +[](char*, size_t size, size_t count, void*) { return size * count; });
  auto perform = [&] {
    long status = 0;
    CURLcode code = curl_easy_perform(easy);
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    return std::make_pair(code, status);
  };

  EXPECT_EQ(perform(), std::make_pair(CURLE_OK, 200L));
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Once(FaultKind::kCloseWithoutResponse));
  auto [code, status] = perform();
  EXPECT_NE(code, CURLE_OK);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(perform(), std::make_pair(CURLE_OK, 200L));
  EXPECT_EQ(sandbox_.requestsTo(kCreateLoggedOutBidPath).size(), 3u);
  curl_easy_cleanup(easy);
}

TEST_F(FaultTest, SlowAnswerArrivesAfterItsDelayAndIsTheNormalAnswer) {
  const auto delay = std::chrono::milliseconds(700);
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Slow(delay));
  WireResponse slow = client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
  EXPECT_GE(slow.elapsed, delay);
  EXPECT_EQ(slow.status, 200);
  EXPECT_EQ(slow.json()["data"]["articleId"], 501);

  WireResponse fast = client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
  EXPECT_LT(fast.elapsed, delay);
  EXPECT_EQ(fast.status, 200);
}

TEST_F(FaultTest, FaultsCountTheirRequestsPerRouteOrLastUntilCleared) {
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Times(FaultKind::kServerError, 2));
  sandbox_.setFault(kCustomerBidPath, Fault::Always(FaultKind::kHtmlErrorPage));
  auto bid_status = [&] {
    return client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl)).status;
  };
  auto customer_status = [&] { return client_.call("POST", kCustomerBidPath, std::string("{}")).status; };

  EXPECT_EQ(bid_status(), 500);
  EXPECT_EQ(bid_status(), 500);
  EXPECT_EQ(bid_status(), 200);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(customer_status(), 502);
  // A route without a fault is not affected by its neighbours'.
  EXPECT_EQ(client_.call("PUT", kAcceptBidPath, std::string("{}")).status, 401);

  sandbox_.clearFault(kCustomerBidPath);
  EXPECT_EQ(customer_status(), 404);  // no such bid: the normal answer again

  sandbox_.setFault(kCustomerBidPath, Fault::Always(FaultKind::kEmptyBody));
  sandbox_.setFault(kAcceptBidPath, Fault::Always(FaultKind::kEmptyBody));
  sandbox_.clearFaults();
  EXPECT_EQ(customer_status(), 404);
  EXPECT_EQ(client_.call("PUT", kAcceptBidPath, std::string("{}")).status, 401);
}

TEST_F(FaultTest, AFaultedAcceptNeverChargesAndASlowOneChargesOnce) {
  auto session = sandbox_.createSession(seed::kReaderEmail);
  ASSERT_TRUE(session);
  json bid = client_
                 .call("POST", kCreateLoggedInBidPath,
                       LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), session->accessToken)
                 .json()["data"];
  const json accept = {{"oboloBidId", bid["oboloBidId"]}, {"oboloTransactionMode", "normal"}};
  for (FaultKind kind :
       {FaultKind::kServerError, FaultKind::kHtmlErrorPage, FaultKind::kMalformedJson, FaultKind::kWrongType,
        FaultKind::kFailureWithMessage, FaultKind::kFailureWithoutMessage, FaultKind::kEmptyBody,
        FaultKind::kCloseWithoutResponse}) {
    sandbox_.setFault(kAcceptBidPath, Fault::Once(kind));
    client_.call("PUT", kAcceptBidPath, accept, session->accessToken);
    EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance) << static_cast<int>(kind);
    EXPECT_FALSE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
  }
  sandbox_.setFault(kAcceptBidPath, Fault::Slow(std::chrono::milliseconds(50)));
  EXPECT_EQ(client_.call("PUT", kAcceptBidPath, accept, session->accessToken).json()["data"]["unlocked"],
            true);
  EXPECT_DOUBLE_EQ(*sandbox_.balance(seed::kReaderEmail), seed::kReaderBalance - seed::kNormalArticlePrice);
}

TEST_F(FaultTest, StoppingCutsASlowAnswerShort) {
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Slow(std::chrono::minutes(5)));
  auto pending = std::async(std::launch::async, [this] {
    return client_.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl));
  });
  // The request is recorded before the delay starts.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (sandbox_.requestsTo(kCreateLoggedOutBidPath).empty() &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ASSERT_EQ(sandbox_.requestsTo(kCreateLoggedOutBidPath).size(), 1u);

  const auto started = std::chrono::steady_clock::now();
  sandbox_.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
  ASSERT_EQ(pending.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_FALSE(sandbox_.isRunning());
}

}  // namespace
}  // namespace obolo::sandbox::testing
