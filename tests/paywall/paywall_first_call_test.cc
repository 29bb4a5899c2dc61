// The paywall's first service call for each state of the stored session, as
// the sandbox receives it.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "entry/global_variable.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

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

TEST_F(PaywallFirstCallTest, AnExpiredTokenIsRefreshedOffTheMainLoopThenALoggedInBidFollows) {
  const auto session =
      sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60), std::chrono::hours(24)).value();
  StoreSession(session);
  testing::TransferObserver transfers;
  auto paywall = host_.load();
  // The refresh's answer is stored on the HTTP session's thread, before the
  // main loop runs at all.
  ASSERT_TRUE(transfers.waitForHandled(2));  // the logo and the refresh, in either order
  EXPECT_NE(global_.getAccessToken(), session.accessToken);
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  EXPECT_EQ(PathsReceived(), (std::vector<std::string>{sandbox::kNextAccessTokenPath, sandbox::kCreateLoggedInBidPath}));
  const nlohmann::json refresh = BodyOf(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).at(0));
  EXPECT_EQ(refresh["refreshToken"], session.refreshToken);
  EXPECT_EQ(refresh["deviceKey"], session.deviceKey);
  EXPECT_EQ(refresh["email"], seed::kReaderEmail);

  // The new access token is stored and used; the refresh token is kept.
  EXPECT_TRUE(global_.isOBTokenValid());
  EXPECT_EQ(global_.getRefreshToken(), session.refreshToken);
  EXPECT_EQ(global_.getDeviceKey(), session.deviceKey);
  EXPECT_EQ(global_.getCustomerId(), seed::kReaderId);
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedInBidPath).at(0).headerExactly("Authorization"),
            "Bearer " + global_.getAccessToken());
}

// Refreshes that fail or are refused are covered by the paywall fault matrix.

}  // namespace
}  // namespace obolo
