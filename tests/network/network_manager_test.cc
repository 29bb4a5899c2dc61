// The service client on the wire: each call sent over a real socket to the
// sandbox, what the sandbox received, and which closure ran with what.

#include "network/network_manager.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>

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
using sandbox::Fault;
using sandbox::FaultKind;
using testing::CallProbe;
using testing::SandboxEnvironment;
namespace seed = sandbox::seed;

class NetworkManagerTest : public ::testing::Test {
 protected:
  const sandbox::RecordedRequest& LastRequest(const char* path) {
    received_ = sandbox_.requestsTo(path);
    EXPECT_FALSE(received_.empty()) << path;
    if (received_.empty()) received_.emplace_back();
    return received_.back();
  }

  testing::TemporaryStore store_;
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
  NetworkManager& network_ = NetworkManager::shared();
  GlobalVariable& global_ = GlobalVariable::shared();
  std::vector<sandbox::RecordedRequest> received_;
};

// Each call's method, path and headers as the service receives them.
TEST_F(NetworkManagerTest, EachCallSendsItsMethodPathAndHeaders) {
  global_.setAccessToken("header.payload.signature");
  struct Expected {
    const char* path;
    const char* method;
    const char* contentType;
    bool accept;
    bool bearer;
  };
  const Expected calls[] = {
      {sandbox::kCreateLoggedOutBidPath, "POST", "application/json", true, false},
      {sandbox::kCreateLoggedInBidPath, "POST", "application/json", false, true},
      {sandbox::kCustomerBidPath, "POST", "Application/json", true, false},
      {sandbox::kNextAccessTokenPath, "PUT", "Application/json", true, false},
      {sandbox::kAcceptBidPath, "PUT", "Application/json", true, true},
      {sandbox::kBalanceAndArticlePath, "POST", "Application/json", true, true},
      {sandbox::kLogoutDevicePath, "PUT", "Application/json", true, true},
  };
  testing::TransferObserver transfers;
  network_.createLoggedOutBid({}, {}, {});
  network_.createLoggedInBid({}, {}, {});
  network_.customerBid({}, {}, {});
  network_.getNextAccessToken({}, {}, {});
  network_.acceptBid({}, {}, {});
  network_.getBalanceAndArticles({}, {}, {});
  network_.logout({}, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(7));

  for (const auto& call : calls) {
    SCOPED_TRACE(call.path);
    const auto& request = LastRequest(call.path);
    EXPECT_EQ(request.method, call.method);
    EXPECT_EQ(request.headerExactly("Content-Type"), call.contentType);
    EXPECT_EQ(request.headerExactly("Accept"), call.accept ? std::optional<std::string>("application/json")
                                                           : std::nullopt);
    EXPECT_EQ(request.header("Authorization"),
              call.bearer ? std::optional<std::string>("Bearer header.payload.signature") : std::nullopt);
  }
}

TEST_F(NetworkManagerTest, WithoutAStoredTokenTheBearerIsTheBareWord) {
  testing::TransferObserver transfers;
  network_.createLoggedInBid({}, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(1));
  // The kit sends "Bearer " with its space; HTTP drops trailing space from a
  // field value, so the service reads "Bearer".
  EXPECT_EQ(transfers.requests().at(0).value("Authorization"), "Bearer ");
  EXPECT_EQ(LastRequest(sandbox::kCreateLoggedInBidPath).headerExactly("Authorization"), "Bearer");
}

TEST_F(NetworkManagerTest, BodiesLeaveOutEmptyTextsAndZerosButKeepBooleansAndNegatives) {
  CreateLoggedBidParam bid;
  bid.customerId = -3;
  bid.articleUrl = seed::kNormalArticleUrl;
  CustomerBidParam customer;
  BalanceAndArticleParam balance;
  balance.customerId = seed::kReaderId;
  balance.publisherId = seed::kPublisherId;
  AcceptBidParam accept;
  accept.oboloBidId = 12;
  accept.oboloTransactionMode = "normal";
  NextTokenParam token;
  token.deviceKey = "dk";
  token.email = "reader@example.com";
  token.refreshToken = "r.t.s";
  LogoutParam logout;
  logout.email = "reader@example.com";

  testing::TransferObserver transfers;
  network_.createLoggedOutBid({}, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(1));
  network_.createLoggedInBid(bid, {}, {});
  network_.customerBid(customer, {}, {});
  network_.getBalanceAndArticles(balance, {}, {});
  network_.acceptBid(accept, {}, {});
  network_.getNextAccessToken(token, {}, {});
  network_.logout(logout, {}, {});
  ASSERT_TRUE(transfers.waitForHandled(7));

  auto body = [&](const char* path) { return json::parse(LastRequest(path).body); };
  EXPECT_EQ(body(sandbox::kCreateLoggedOutBidPath), (json{{"isCustomerLoggedIn", false}, {"isSIMEnabled", false}}));
  EXPECT_EQ(body(sandbox::kCreateLoggedInBidPath), (json{{"articleUrl", seed::kNormalArticleUrl},
                                                         {"customerId", -3},
                                                         {"isCustomerLoggedIn", false},
                                                         {"isSIMEnabled", false}}));
  EXPECT_EQ(LastRequest(sandbox::kCustomerBidPath).body, "{}");
  EXPECT_EQ(body(sandbox::kBalanceAndArticlePath),
            (json{{"customerId", seed::kReaderId}, {"publisherId", seed::kPublisherId}}));
  EXPECT_EQ(body(sandbox::kAcceptBidPath), (json{{"oboloBidId", 12}, {"oboloTransactionMode", "normal"}}));
  EXPECT_EQ(body(sandbox::kNextAccessTokenPath),
            (json{{"deviceKey", "dk"}, {"email", "reader@example.com"}, {"refreshToken", "r.t.s"}}));
  EXPECT_EQ(body(sandbox::kLogoutDevicePath), (json{{"email", "reader@example.com"}}));
}

TEST_F(NetworkManagerTest, OnlyTheLoggedInBidTurnsARefusalIntoAFailure) {
  struct Case {
    std::string answer;
    std::optional<std::string> failure;  // none: completion
  } cases[] = {
      {R"({"success":false,"message":"Token expired"})", "Token expired"},
      {R"({"message":"Token expired"})", "Token expired"},
      {R"({"success":false})", ""},
      {R"({"success":true})", std::nullopt},
  };
  for (const auto& c : cases) {
    sandbox_.setFault(sandbox::kCreateLoggedInBidPath, Fault::Custom(200, c.answer));
    CallProbe<OboloData> probe;
    network_.createLoggedInBid({}, probe.completion(), probe.onFailure());
    ASSERT_TRUE(probe.wait()) << c.answer;
    EXPECT_EQ(probe.failure(), c.failure) << c.answer;
    EXPECT_EQ(probe.envelope().has_value(), !c.failure.has_value()) << c.answer;
  }
  // The other calls hand a refusal to completion for the caller to judge.
  for (const char* path : {sandbox::kCreateLoggedOutBidPath, sandbox::kCustomerBidPath, sandbox::kAcceptBidPath}) {
    sandbox_.setFault(path, Fault::Custom(200, R"({"success":false,"message":"No"})"));
  }
  CallProbe<OboloData> out, customer, accept;
  network_.createLoggedOutBid({}, out.completion(), out.onFailure());
  network_.customerBid({}, customer.completion(), customer.onFailure());
  network_.acceptBid({}, accept.completion(), accept.onFailure());
  for (auto* probe : {&out, &customer, &accept}) {
    ASSERT_TRUE(probe->wait());
    ASSERT_TRUE(probe->envelope().has_value());
    EXPECT_EQ(probe->envelope()->success, false);
    EXPECT_EQ(probe->envelope()->message, "No");
  }
}

TEST_F(NetworkManagerTest, AnswersThatDoNotDecodeGoToOnFailure) {
  struct Case {
    const char* path;
    Fault fault;
    const char* failure;
  } cases[] = {
      {sandbox::kBalanceAndArticlePath, Fault::Once(FaultKind::kHtmlErrorPage),
       "The data couldn't be read because it isn't valid JSON."},
      {sandbox::kBalanceAndArticlePath, Fault::Once(FaultKind::kMalformedJson),
       "The data couldn't be read because it isn't valid JSON."},
      {sandbox::kBalanceAndArticlePath, Fault::Once(FaultKind::kEmptyBody),
       "The data couldn't be read because the data is empty."},
      {sandbox::kLogoutDevicePath, Fault::Custom(200, R"({"success":true})"),
       R"(The data couldn't be read because "data" is missing.)"},
  };
  for (const auto& c : cases) {
    sandbox_.setFault(c.path, c.fault);
    CallProbe<BalanceAndArticleData> balance;
    CallProbe<LogoutData> logout;
    if (std::string_view(c.path) == sandbox::kLogoutDevicePath) {
      network_.logout({}, logout.completion(), logout.onFailure());
      ASSERT_TRUE(logout.wait());
      EXPECT_EQ(logout.failure(), c.failure);
    } else {
      network_.getBalanceAndArticles({}, balance.completion(), balance.onFailure());
      ASSERT_TRUE(balance.wait());
      EXPECT_EQ(balance.failure(), c.failure);
    }
  }
}

TEST_F(NetworkManagerTest, AServerErrorWithAnEmptyObjectStillCompletes) {
  sandbox_.setFault(sandbox::kBalanceAndArticlePath, Fault::Once(FaultKind::kServerError));
  CallProbe<BalanceAndArticleData> probe;
  network_.getBalanceAndArticles({}, probe.completion(), probe.onFailure());
  ASSERT_TRUE(probe.wait());
  ASSERT_TRUE(probe.envelope().has_value());
  EXPECT_FALSE(probe.envelope()->success || probe.envelope()->message || probe.envelope()->data ||
               probe.envelope()->statusCode);
}

TEST_F(NetworkManagerTest, WithoutABodyNoClosureRuns) {
  sandbox_.setFault(sandbox::kAcceptBidPath, Fault::Once(FaultKind::kCloseWithoutResponse));
  testing::TransferObserver transfers;
  testing::LogCapture log;
  CallProbe<OboloData> probe;
  network_.acceptBid({}, probe.completion(), probe.onFailure());
  ASSERT_TRUE(transfers.waitForHandled(1));
  EXPECT_EQ(probe.calls(), 0);
  // No response object either: no address line after the three issuing lines.
  EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(NetworkManagerTest, ClosuresRunOnTheSessionThreadAndCallsOverlap) {
  // A slow accept does not hold up a bid issued after it.
  sandbox_.setFault(sandbox::kAcceptBidPath, Fault::Slow(std::chrono::milliseconds(1500)));
  CallProbe<OboloData> slow, fast;
  network_.acceptBid({}, slow.completion(), slow.onFailure());
  network_.createLoggedOutBid({}, fast.completion(), fast.onFailure());
  ASSERT_TRUE(fast.wait());
  EXPECT_EQ(slow.calls(), 0);
  ASSERT_TRUE(slow.wait());
  for (auto* probe : {&slow, &fast}) {
    EXPECT_NE(probe->thread(), std::this_thread::get_id());
    EXPECT_TRUE(probe->ranOnSessionThread());
  }
}

TEST_F(NetworkManagerTest, LogLinesOfEachCall) {
  global_.setAccessToken("a.b.c");
  const std::string base = API::BASE_URL();
  {
    testing::LogCapture log;
    CallProbe<OboloData> probe;
    CreateLoggedBidParam param;
    param.category = "news";
    network_.createLoggedOutBid(param, probe.completion(), probe.onFailure());
    ASSERT_TRUE(probe.wait());
    const auto lines = log.lines();
    ASSERT_GE(lines.size(), 5u);
    EXPECT_EQ(lines[0], "createLoggedOutBid started");
    EXPECT_EQ(lines[1], "createLoggedOutBid Url: " + base + "/v2/obid/createLoggedOutBid");
    EXPECT_EQ(lines[2], "Obolo_iOS_SDK.CreateLoggedBidParam");
    EXPECT_EQ(lines[3], base + "/v2/obid/createLoggedOutBid");  // the response's address
    EXPECT_TRUE(lines[4].starts_with("OboloData(success: false, message: ")) << lines[4];
  }
  {
    testing::LogCapture log;
    CallProbe<OboloData> probe;
    CreateLoggedBidParam param;
    param.category = "news";
    network_.createLoggedInBid(param, probe.completion(), probe.onFailure());
    ASSERT_TRUE(probe.wait());
    const auto entries = log.entries();
    ASSERT_GE(entries.size(), 4u);
    EXPECT_EQ(entries[0].text, "createLoggedInBid started");
    EXPECT_EQ(entries[1].text, base + "/v2/obid/createLoggedInBid");
    EXPECT_EQ(entries[2].text, "Access Token: a.b.c");
    EXPECT_EQ(entries[2].content, LogContent::kCredential);
    EXPECT_EQ(entries[3].text, R"(["category": "news", "isCustomerLoggedIn": false, "isSIMEnabled": false])");
  }
  {
    testing::LogCapture log;
    CallProbe<LogoutData> probe;
    LogoutParam param;
    param.deviceKey = "dk";
    network_.logout(param, probe.completion(), probe.onFailure());
    ASSERT_TRUE(probe.wait());
    const auto entries = log.entries();
    ASSERT_GE(entries.size(), 3u);
    EXPECT_EQ(entries[0].text, "logout started");
    EXPECT_EQ(entries[1].text, "Url: " + base + "/v1/customer/logout/device");
    EXPECT_EQ(entries[2].text, R"(["deviceKey": "dk"])");
    EXPECT_EQ(entries[2].content, LogContent::kCredential);
  }
}

// The whole protocol, in the order a reader meets it.
TEST_F(NetworkManagerTest, AWholePurchaseAndLogoutOverTheProtocol) {
  CreateLoggedBidParam bidParam;
  bidParam.articleUrl = seed::kNormalArticleUrl;
  bidParam.category = seed::kCategory;
  bidParam.publisherDomain = seed::kPublisherDomain;
  CallProbe<OboloData> loggedOut;
  network_.createLoggedOutBid(bidParam, loggedOut.completion(), loggedOut.onFailure());
  ASSERT_TRUE(loggedOut.wait());
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

}  // namespace
}  // namespace obolo
