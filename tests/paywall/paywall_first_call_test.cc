// The paywall's first service call for each state of the stored session, as
// the sandbox receives it.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "entry/global_variable.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using sandbox::Fault;
using sandbox::FaultKind;
using testing::PaywallHost;
using testing::SandboxEnvironment;
namespace seed = sandbox::seed;

nlohmann::json BodyOf(const sandbox::RecordedRequest& request) { return nlohmann::json::parse(request.body); }

std::vector<std::string> PathsReceived() {
  std::vector<std::string> paths;
  for (const auto& request : SandboxEnvironment::sandbox().requests()) {
    if (request.path.starts_with("/v")) paths.push_back(request.path);
  }
  return paths;
}

class PaywallFirstCallTest : public ::testing::Test {
 protected:
  void StoreSession(const sandbox::SessionKeys& keys) {
    global_.setDeviceKey(keys.deviceKey);
    global_.setAccessToken(keys.accessToken);
    global_.setRefreshToken(keys.refreshToken);
    global_.setEmail(keys.email);
    global_.setCustomerId(keys.customerId);
  }

  testing::TemporaryStore store_;
  PaywallHost host_{seed::kNormalArticleUrl};
  GlobalVariable& global_ = GlobalVariable::shared();
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
};

TEST_F(PaywallFirstCallTest, WithoutASessionTheFirstCallIsALoggedOutBid) {
  auto paywall = host_.load();
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  EXPECT_EQ(PathsReceived(), std::vector<std::string>{sandbox::kCreateLoggedOutBidPath});
  const nlohmann::json body = BodyOf(sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath).at(0));
  EXPECT_FALSE(body.contains("accessKey"));
  EXPECT_FALSE(body.contains("customerId"));
  EXPECT_EQ(body["articleUrl"], seed::kNormalArticleUrl);
  EXPECT_EQ(body["category"], seed::kCategory);
  EXPECT_EQ(body["publisherDomain"], seed::kPublisherDomain);
  EXPECT_EQ(body["publisherCustomerId"], seed::kPublisherCustomerId);
  EXPECT_EQ(body["ipAddress"], "10.0.0.0");
  EXPECT_EQ(body["isCustomerLoggedIn"], false);
}

TEST_F(PaywallFirstCallTest, WithAValidTokenTheFirstCallIsALoggedInBid) {
  const auto session = sandbox_.createSession(seed::kReaderEmail).value();
  StoreSession(session);
  auto paywall = host_.load();
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  EXPECT_EQ(PathsReceived(), std::vector<std::string>{sandbox::kCreateLoggedInBidPath});
  const auto request = sandbox_.requestsTo(sandbox::kCreateLoggedInBidPath).at(0);
  EXPECT_EQ(request.headerExactly("Authorization"), "Bearer " + session.accessToken);
  const nlohmann::json body = BodyOf(request);
  EXPECT_EQ(body["accessKey"], seed::kPublisherAccessKey);
  EXPECT_EQ(body["customerId"], seed::kReaderId);
  EXPECT_EQ(body["isCustomerLoggedIn"], false);
}

TEST_F(PaywallFirstCallTest, AnExpiredTokenIsRefreshedThenALoggedInBidFollows) {
  const auto session =
      sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(24)).value();
  StoreSession(session);
  auto paywall = host_.load();
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  EXPECT_EQ(PathsReceived(), (std::vector<std::string>{sandbox::kNextAccessTokenPath, sandbox::kCreateLoggedInBidPath}));
  const nlohmann::json refresh = BodyOf(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).at(0));
  EXPECT_EQ(refresh["refreshToken"], session.refreshToken);
  EXPECT_EQ(refresh["deviceKey"], session.deviceKey);
  EXPECT_EQ(refresh["email"], seed::kReaderEmail);

  // The new access token is stored and used; the refresh token is kept.
  EXPECT_NE(global_.getAccessToken(), session.accessToken);
  EXPECT_TRUE(global_.isOBTokenValid());
  EXPECT_EQ(global_.getRefreshToken(), session.refreshToken);
  EXPECT_EQ(global_.getDeviceKey(), session.deviceKey);
  EXPECT_EQ(global_.getCustomerId(), seed::kReaderId);
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedInBidPath).at(0).headerExactly("Authorization"),
            "Bearer " + global_.getAccessToken());
}

TEST_F(PaywallFirstCallTest, TheRefreshIsStoredWithoutTheMainLoopRunning) {
  // The refresh's answer is handled on the HTTP session's thread: the store
  // changes while the main loop is not run at all.
  testing::TransferObserver transfers;
  const auto session =
      sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(24)).value();
  StoreSession(session);
  host_.load();
  ASSERT_TRUE(transfers.waitForHandled(1));
  EXPECT_NE(global_.getAccessToken(), session.accessToken);
}

TEST_F(PaywallFirstCallTest, AFailedRefreshFallsBackToALoggedOutBidAndKeepsTheSession) {
  const auto session =
      sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(24)).value();
  StoreSession(session);
  sandbox_.setFault(sandbox::kNextAccessTokenPath, Fault::Once(FaultKind::kMalformedJson));
  auto paywall = host_.load();
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  EXPECT_EQ(PathsReceived(),
            (std::vector<std::string>{sandbox::kNextAccessTokenPath, sandbox::kCreateLoggedOutBidPath}));
  EXPECT_EQ(global_.getAccessToken(), session.accessToken);
  EXPECT_EQ(global_.getRefreshToken(), session.refreshToken);
  EXPECT_EQ(global_.getDeviceKey(), session.deviceKey);
}

TEST_F(PaywallFirstCallTest, ARefusedRefreshLeavesThePaywallHiddenAndTheArticleReadable) {
  // The service's refusal decodes (no `data`): nothing is stored, no bid follows.
  const auto session = sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60),
                                              std::chrono::seconds(-60)).value();
  StoreSession(session);
  testing::TransferObserver transfers;
  auto paywall = host_.load();
  ASSERT_TRUE(transfers.waitForHandled(1));
  MainLoop::main().runFor(std::chrono::seconds(1));
  EXPECT_EQ(PathsReceived(), std::vector<std::string>{sandbox::kNextAccessTokenPath});
  EXPECT_TRUE(PaywallHost::isHidden(*paywall));
  EXPECT_EQ(global_.getAccessToken(), session.accessToken);
}

}  // namespace
}  // namespace obolo
