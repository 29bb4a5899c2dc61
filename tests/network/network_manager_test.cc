// The service client on the wire, over real sockets to the sandbox. What each
// fault makes of each call is the reliability suite's fault matrix.

#include "network/network_manager.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "entry/global_variable.h"
#include "network/api.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/log_capture.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using nlohmann::json;
using testing::CallProbe;
namespace seed = sandbox::seed;

class NetworkManagerTest : public ::testing::Test {
 protected:
  testing::TemporaryStore store_;
  sandbox::Sandbox& sandbox_ = testing::SandboxEnvironment::sandbox();
  NetworkManager& network_ = NetworkManager::shared();
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(NetworkManagerTest, EachCallSendsItsMethodHeadersAndBody) {
  testing::TransferObserver transfers;
  // Without a stored token the kit sends "Bearer " with its space; HTTP drops
  // trailing space from a field value, so the service reads "Bearer".
  network_.createLoggedInBid({}, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(1));
  EXPECT_EQ(transfers.requests().at(0).value("Authorization"), "Bearer ");
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedInBidPath).at(0).headerExactly("Authorization"), "Bearer");
  sandbox_.clearRequests();

  GlobalVariable::shared().setAccessToken("header.payload.signature");
  CreateLoggedBidParam bid;
  bid.customerId = -3;
  bid.articleUrl = "https://news.example/a";
  NextTokenParam token{"dk", "reader@example.com", "r.t.s"};
  AcceptBidParam accept;
  accept.oboloBidId = 12;
  accept.oboloTransactionMode = "normal";
  BalanceAndArticleParam balance;
  balance.customerId = 101;
  balance.publisherId = 7;
  LogoutParam logout;
  logout.email = "reader@example.com";
  network_.createLoggedOutBid({}, {}, {});  // every member at its default
  network_.createLoggedInBid(bid, {}, {});
  network_.customerBid({}, {}, {});
  network_.getNextAccessToken(token, {}, {});
  network_.acceptBid(accept, {}, {});
  network_.getBalanceAndArticles(balance, {}, {});
  network_.logout(logout, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(8));

  const struct {
    const char* path;
    const char* method;
    const char* contentType;
    bool accept, bearer;
    json body;
  } calls[] = {
      {sandbox::kCreateLoggedOutBidPath, "POST", "application/json", true, false,
       {{"isCustomerLoggedIn", false}, {"isSIMEnabled", false}}},
      {sandbox::kCreateLoggedInBidPath, "POST", "application/json", false, true,
       {{"articleUrl", "https://news.example/a"}, {"customerId", -3}, {"isCustomerLoggedIn", false},
        {"isSIMEnabled", false}}},
      {sandbox::kCustomerBidPath, "POST", "Application/json", true, false, json::object()},
      {sandbox::kNextAccessTokenPath, "PUT", "Application/json", true, false,
       {{"deviceKey", "dk"}, {"email", "reader@example.com"}, {"refreshToken", "r.t.s"}}},
      {sandbox::kAcceptBidPath, "PUT", "Application/json", true, true,
       {{"oboloBidId", 12}, {"oboloTransactionMode", "normal"}}},
      {sandbox::kBalanceAndArticlePath, "POST", "Application/json", true, true,
       {{"customerId", 101}, {"publisherId", 7}}},
      {sandbox::kLogoutDevicePath, "PUT", "Application/json", true, true, {{"email", "reader@example.com"}}},
  };
  for (const auto& call : calls) {
    SCOPED_TRACE(call.path);
    const auto received = sandbox_.requestsTo(call.path);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].method, call.method);
    EXPECT_EQ(received[0].headerExactly("Content-Type"), call.contentType);
    EXPECT_EQ(received[0].headerExactly("Accept"),
              call.accept ? std::optional<std::string>("application/json") : std::nullopt);
    EXPECT_EQ(received[0].header("Authorization"),
              call.bearer ? std::optional<std::string>("Bearer header.payload.signature") : std::nullopt);
    EXPECT_EQ(json::parse(received[0].body), call.body);
  }
}

// The seven calls in the order a reader's purchase makes them: the records
// decode, the session the customer bid hands out works for the rest, and the
// balance moves by the price.
TEST_F(NetworkManagerTest, AWholePurchaseAndLogoutOverTheProtocol) {
  CreateLoggedBidParam bidParam;
  bidParam.articleUrl = seed::kNormalArticleUrl;
  bidParam.category = seed::kCategory;
  bidParam.publisherDomain = seed::kPublisherDomain;
  CallProbe<OboloData> loggedOut;
  network_.createLoggedOutBid(bidParam, loggedOut.completion(), loggedOut.onFailure());
  ASSERT_TRUE(loggedOut.wait());
  EXPECT_TRUE(loggedOut.ranOnSessionThread()) << "not on the main loop";
  ASSERT_TRUE(loggedOut.envelope() && loggedOut.envelope()->data);
  const DataSet offer = *loggedOut.envelope()->data;
  ASSERT_TRUE(offer.oboloBidId && offer.paywallSettings);
  EXPECT_EQ(offer.publisherId, seed::kPublisherId);
  EXPECT_EQ(offer.unlocked, false);

  const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
  CustomerBidParam customerParam;
  customerParam.deviceKey = keys.deviceKey;
  customerParam.oboloBidId = *offer.oboloBidId;
  customerParam.loginToken = keys.loginKey;
  CallProbe<OboloData> customer;
  network_.customerBid(customerParam, customer.completion(), customer.onFailure());
  ASSERT_TRUE(customer.wait());
  const auto info = customer.envelope()->data->customerInfo.value();
  EXPECT_EQ(info.customer->id, seed::kReaderId);
  EXPECT_EQ(info.customer->email, seed::kReaderEmail);
  global_.setAccessToken(info.accessToken.value());
  global_.setDeviceKey(info.deviceKey.value());
  global_.setRefreshToken(info.refreshToken.value());
  global_.setEmail(seed::kReaderEmail);
  global_.setCustomerId(seed::kReaderId);

  bidParam.accessKey = seed::kPublisherAccessKey;
  bidParam.customerId = seed::kReaderId;
  CallProbe<OboloData> loggedIn;
  network_.createLoggedInBid(bidParam, loggedIn.completion(), loggedIn.onFailure());
  ASSERT_TRUE(loggedIn.wait());
  ASSERT_FALSE(loggedIn.failure()) << *loggedIn.failure();
  const DataSet bid = *loggedIn.envelope()->data;
  EXPECT_EQ(bid.customerBalance, seed::kReaderBalance);

  AcceptBidParam acceptParam;
  acceptParam.oboloBidId = bid.oboloBidId.value();
  acceptParam.oboloTransactionMode = bid.oboloTransactionMode.value();
  CallProbe<OboloData> accept;
  network_.acceptBid(acceptParam, accept.completion(), accept.onFailure());
  ASSERT_TRUE(accept.wait());
  EXPECT_EQ(accept.envelope()->data->unlocked, true);

  NextTokenParam tokenParam;
  tokenParam.deviceKey = global_.getDeviceKey();
  tokenParam.email = seed::kReaderEmail;
  tokenParam.refreshToken = global_.getRefreshToken();
  CallProbe<NextTokenData> token;
  network_.getNextAccessToken(tokenParam, token.completion(), token.onFailure());
  ASSERT_TRUE(token.wait());
  ASSERT_TRUE(token.envelope()->data && token.envelope()->data->accessToken);
  global_.setAccessToken(*token.envelope()->data->accessToken);

  BalanceAndArticleParam balanceParam;
  balanceParam.customerId = seed::kReaderId;
  balanceParam.publisherId = seed::kPublisherId;
  CallProbe<BalanceAndArticleData> balance;
  network_.getBalanceAndArticles(balanceParam, balance.completion(), balance.onFailure());
  ASSERT_TRUE(balance.wait());
  const BADataSet wallet = balance.envelope()->data.value();
  EXPECT_DOUBLE_EQ(wallet.balance.value(), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_EQ(wallet.currency, seed::kCurrency);
  EXPECT_TRUE(wallet.recommendations.has_value());

  LogoutParam logoutParam;
  logoutParam.deviceKey = global_.getDeviceKey();
  logoutParam.email = seed::kReaderEmail;
  CallProbe<LogoutData> logout;
  network_.logout(logoutParam, logout.completion(), logout.onFailure());
  ASSERT_TRUE(logout.wait());
  EXPECT_TRUE(logout.envelope()->data);
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(global_.getDeviceKey()), true);
}

TEST_F(NetworkManagerTest, CallsOverlap) {
  sandbox_.setFault(sandbox::kAcceptBidPath, sandbox::Fault::Slow(std::chrono::milliseconds(1500)));
  CallProbe<OboloData> slow, fast;
  network_.acceptBid({}, slow.completion(), slow.onFailure());
  network_.createLoggedOutBid({}, fast.completion(), fast.onFailure());
  ASSERT_TRUE(fast.wait());
  EXPECT_EQ(slow.calls(), 0) << "a slow call does not hold up one issued after it";
  EXPECT_TRUE(slow.wait());
}

// An answer body is held only up to 1 MiB: one byte more and the call fails
// with one stable text instead of decoding, wherever the body comes from.
TEST_F(NetworkManagerTest, AnAnswerPastOneMebibyteFailsWithAStableText) {
  constexpr std::size_t kCap = 1024 * 1024;
  // A balance answer of exactly `size` bytes: a message padded out.
  auto answerOf = [](std::size_t size) {
    const std::string head = R"({"success":true,"message":")", tail = R"("})";
    return head + std::string(size - head.size() - tail.size(), 'x') + tail;
  };
  const struct {
    std::size_t size;
    int status;
    bool fits;
  } cases[] = {{kCap, 200, true}, {kCap + 1, 200, false}, {kCap + 1, 500, false}, {16 * kCap, 200, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.size) + " bytes with HTTP " + std::to_string(c.status));
    sandbox_.setFault(sandbox::kBalanceAndArticlePath, sandbox::Fault::Custom(c.status, answerOf(c.size)));
    CallProbe<BalanceAndArticleData> probe;
    network_.getBalanceAndArticles({}, probe.completion(), probe.onFailure());
    ASSERT_TRUE(probe.wait());
    if (c.fits) {
      ASSERT_TRUE(probe.envelope().has_value());
      EXPECT_EQ(probe.envelope()->message->size(), c.size - 29);
    } else {
      EXPECT_EQ(probe.failure(), "The data couldn't be read because it is too large.");
    }
  }
}

// The lines a call writes until its closure has run.
template <class Envelope, class Issue>
std::vector<testing::LogCapture::Line> LinesOf(Issue issue) {
  testing::LogCapture log;
  CallProbe<Envelope> probe;
  issue(probe.completion(), probe.onFailure());
  EXPECT_TRUE(probe.wait());
  return log.entries();
}

TEST_F(NetworkManagerTest, EachCallWritesItsLines) {
  GlobalVariable::shared().setAccessToken("a.b.c");
  const std::string base = API::BASE_URL();
  CreateLoggedBidParam bid;
  bid.category = "news";
  LogoutParam logout;
  logout.deviceKey = "dk";

  auto out = LinesOf<OboloData>([&](auto done, auto failed) { network_.createLoggedOutBid(bid, done, failed); });
  ASSERT_GE(out.size(), 5u);
  EXPECT_EQ(out[0].text, "createLoggedOutBid started");
  EXPECT_EQ(out[1].text, "createLoggedOutBid Url: " + base + "/v2/obid/createLoggedOutBid");
  EXPECT_EQ(out[2].text, "Obolo_iOS_SDK.CreateLoggedBidParam");
  EXPECT_EQ(out[3].text, base + "/v2/obid/createLoggedOutBid");  // the response's address
  EXPECT_TRUE(out[4].text.starts_with("OboloData(success: false, message: ")) << out[4].text;

  auto in = LinesOf<OboloData>([&](auto done, auto failed) { network_.createLoggedInBid(bid, done, failed); });
  ASSERT_GE(in.size(), 4u);
  EXPECT_EQ(in[0].text, "createLoggedInBid started");
  EXPECT_EQ(in[1].text, base + "/v2/obid/createLoggedInBid");
  EXPECT_EQ(in[2].text, "Access Token: a.b.c");
  EXPECT_EQ(in[2].content, LogContent::kCredential);
  EXPECT_EQ(in[3].text, R"(["category": "news", "isCustomerLoggedIn": false, "isSIMEnabled": false])");

  auto off = LinesOf<LogoutData>([&](auto done, auto failed) { network_.logout(logout, done, failed); });
  ASSERT_GE(off.size(), 3u);
  EXPECT_EQ(off[0].text, "logout started");
  EXPECT_EQ(off[1].text, "Url: " + base + "/v1/customer/logout/device");
  EXPECT_EQ(off[2].text, R"(["deviceKey": "dk"])");
  EXPECT_EQ(off[2].content, LogContent::kCredential);
}

}  // namespace
}  // namespace obolo
