// Whole purchases on a headless host screen against the sandbox: a reader who
// logs in first, a reader who is logged in, and a logout elsewhere.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "platform/notification_center.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/log_capture.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using nlohmann::json;
using sandbox::Fault;
using sandbox::FaultKind;
using testing::PaywallHost;
using testing::SandboxEnvironment;
namespace seed = sandbox::seed;

class PaywallPurchaseFlowTest : public ::testing::Test {
 protected:
  std::shared_ptr<PaywallVC> LoadWithCard() {
    auto paywall = host_.load();
    EXPECT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall) && paywall->lblObTitle->text(); }));
    return paywall;
  }

  void LogIn(const sandbox::SessionKeys& keys) {
    global_.setDeviceKey(keys.deviceKey);
    global_.setAccessToken(keys.accessToken);
    global_.setRefreshToken(keys.refreshToken);
    global_.setEmail(keys.email);
    global_.setCustomerId(keys.customerId);
  }

  // Taps unlock on a card without a session and returns the login screen it opens.
  std::shared_ptr<WebLoginVC> OpenLogin(PaywallVC& paywall) {
    paywall.btnUnlock->sendActions(UIControlEvent::touchUpInside);
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall.presentedViewController());
    EXPECT_NE(login, nullptr);
    return login;
  }

  // The page posts the keys the sandbox issued to the reader.
  void PostLoginKeys(WebLoginVC& login, std::string_view email) {
    const auto keys = sandbox_.issueLoginKeys(email).value();
    ASSERT_TRUE(login.webview->postMessageFromPage("obHandler", {{"device_key", keys.deviceKey},
                                                                 {"login_key", keys.loginKey}}));
  }

  // After the reveal's 5 seconds the article is readable and the wallet button waits on the host.
  void ExpectRevealedAfterFiveSeconds(PaywallVC& paywall) {
    EXPECT_TRUE(paywall.unlockView->isHidden());
    EXPECT_FALSE(paywall.splashView->isHidden());
    EXPECT_FALSE(host_.hasFloatingButtonOnScreen());
    host_.advance(std::chrono::milliseconds(4900));
    EXPECT_FALSE(paywall.splashView->isHidden());
    host_.advance(std::chrono::milliseconds(200));
    EXPECT_TRUE(PaywallHost::isHidden(paywall));
    EXPECT_TRUE(paywall.splashView->isHidden());
    EXPECT_TRUE(paywall.visualEffectView->isHidden());
    EXPECT_TRUE(host_.hasFloatingButtonOnScreen());
  }

  testing::TemporaryStore store_;
  PaywallHost host_{seed::kNormalArticleUrl};
  GlobalVariable& global_ = GlobalVariable::shared();
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
};

TEST_F(PaywallPurchaseFlowTest, ALoggedOutReaderLogsInThenPays) {
  auto paywall = LoadWithCard();
  auto login = OpenLogin(*paywall);
  ASSERT_NE(login, nullptr);
  EXPECT_EQ(login->obBidId, paywall->obBidId);
  EXPECT_EQ(login->publisherId, seed::kPublisherId);

  PostLoginKeys(*login, seed::kReaderEmail);
  ASSERT_TRUE(host_.waitFor([&] { return global_.isOBTokenExist() && paywall->presentedViewController() == nullptr; }));
  // The login is stored whole; the bid is offered to the known reader.
  EXPECT_TRUE(paywall->isRedirectToPaywall);
  EXPECT_EQ(global_.getEmail(), seed::kReaderEmail);
  EXPECT_EQ(global_.getCustomerId(), seed::kReaderId);
  EXPECT_FALSE(global_.getRefreshToken().empty());
  EXPECT_FALSE(global_.getDeviceKey().empty());
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_FALSE(paywall->btnUnlock->isHidden());

  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host_.waitFor([&] { return paywall->unlockView->isHidden(); }));
  EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
  ExpectRevealedAfterFiveSeconds(*paywall);
}

TEST_F(PaywallPurchaseFlowTest, TheLoginCallbackMarksTheReturnBeforeTheCustomerBid) {
  // The customer bid reports the article unlocked in normal mode: only a
  // paywall that already knows the reader came back from logging in reveals it.
  auto paywall = LoadWithCard();
  auto login = OpenLogin(*paywall);
  ASSERT_NE(login, nullptr);
  json data = {{"oboloBidId", paywall->obBidId}, {"publisherId", 7}, {"articleActive", true},
               {"isPaywallEnabledInCountry", true}, {"unlocked", true}, {"oboloTransactionMode", "normal"},
               {"paywallSettings", {{"obAutoUnlockText", "Welcome back"}}},
               {"customerInfo", {{"accessToken", "a.b.c"}, {"deviceKey", "dk"}, {"refreshToken", "r.s.t"},
                                 {"customer", {{"id", 55}, {"email", "back@example.com"}}}}}};
  sandbox_.setFault(sandbox::kCustomerBidPath, Fault::Custom(200, json{{"success", true}, {"data", data}}.dump()));
  login->callback("dk", "lk");
  EXPECT_TRUE(paywall->isRedirectToPaywall);
  ASSERT_TRUE(host_.waitFor([&] { return paywall->unlockView->isHidden(); }));
  EXPECT_FALSE(paywall->splashView->isHidden());
  EXPECT_EQ(paywall->lblSplashMessage->text(), "Welcome back");
  EXPECT_EQ(global_.getAccessToken(), "a.b.c");
  EXPECT_EQ(global_.getRefreshToken(), "r.s.t");
  EXPECT_EQ(global_.getCustomerId(), 55);
  const json sent = json::parse(sandbox_.requestsTo(sandbox::kCustomerBidPath).at(0).body);
  EXPECT_EQ(sent, (json{{"deviceKey", "dk"}, {"oboloBidId", paywall->obBidId}, {"loginToken", "lk"}}));
}

TEST_F(PaywallPurchaseFlowTest, ALoggedInReaderPaysAndTheLogoutBringsTheCardBack) {
  LogIn(sandbox_.createSession(seed::kReaderEmail).value());
  auto paywall = LoadWithCard();
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host_.waitFor([&] { return paywall->unlockView->isHidden(); }));
  EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(), seed::kReaderBalance - seed::kNormalArticlePrice);
  const json accepted = json::parse(sandbox_.requestsTo(sandbox::kAcceptBidPath).at(0).body);
  EXPECT_EQ(accepted, (json{{"oboloBidId", paywall->obBidId}, {"oboloTransactionMode", "normal"}}));
  ExpectRevealedAfterFiveSeconds(*paywall);

  // The wallet logged the reader out elsewhere.
  global_.logout();
  sandbox_.clearRequests();
  NotificationCenter::defaultCenter().post("NotificationIdentifier");
  EXPECT_FALSE(host_.hasFloatingButtonOnScreen());
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath).size(), 1u);
}

TEST_F(PaywallPurchaseFlowTest, AnAcceptAnswerThatDecodesRevealsWhateverItSays) {
  // The expensive article: the service refuses for lack of funds, with an
  // answer that decodes, and the paywall reveals all the same.
  PaywallHost expensive(seed::kExpensiveArticleUrl);
  LogIn(sandbox_.createSession(seed::kReaderEmail).value());
  auto paywall = expensive.load();
  ASSERT_TRUE(expensive.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_TRUE(paywall->btnUnlock->isHidden());  // balance below price, no credit
  paywall->onUnlockButtonTapped({});
  ASSERT_TRUE(expensive.waitFor([&] { return paywall->unlockView->isHidden(); }));
  EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(), seed::kReaderBalance);
}

TEST_F(PaywallPurchaseFlowTest, AFailedAcceptLeavesTheCard) {
  LogIn(sandbox_.createSession(seed::kReaderEmail).value());
  auto paywall = LoadWithCard();
  for (FaultKind fault : {FaultKind::kMalformedJson, FaultKind::kHtmlErrorPage, FaultKind::kCloseWithoutResponse,
                          FaultKind::kEmptyBody, FaultKind::kWrongType}) {
    testing::TransferObserver transfers;
    sandbox_.setFault(sandbox::kAcceptBidPath, Fault::Once(fault));
    paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
    ASSERT_TRUE(transfers.waitForHandled(1));
    MainLoop::main().runFor(std::chrono::milliseconds(1));
    EXPECT_TRUE(PaywallHost::isCardShown(*paywall)) << static_cast<int>(fault);
  }
  EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(), seed::kReaderBalance);
}

TEST_F(PaywallPurchaseFlowTest, AnExpiredTokenAtTheTapIsNotValidAndNothingHappens) {
  LogIn(sandbox_.createSession(seed::kReaderEmail).value());
  auto paywall = LoadWithCard();
  global_.setAccessToken(sandbox_.createSession(seed::kReaderEmail, std::chrono::seconds(-60),
                                                std::chrono::hours(1))->accessToken);
  sandbox_.clearRequests();
  testing::LogCapture log;
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  MainLoop::main().runFor(std::chrono::seconds(1));
  EXPECT_TRUE(log.contains("Not valid"));
  EXPECT_TRUE(sandbox_.requests().empty());
  EXPECT_EQ(paywall->presentedViewController(), nullptr);
  EXPECT_TRUE(PaywallHost::isCardShown(*paywall));
}

}  // namespace
}  // namespace obolo
