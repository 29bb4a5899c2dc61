// A reader's whole journey on a headless host, against the sandbox: logged out
// at first, logs in through the login screen, pays, opens the wallet from the
// floating button, logs out, and meets the card again. Faults at each call are
// covered by the paywall fault matrix.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/log_capture.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using nlohmann::json;
using sandbox::Fault;
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

  // Taps unlock on a card without a session and returns the login screen it opens.
  std::shared_ptr<WebLoginVC> OpenLogin(PaywallVC& paywall) {
    paywall.btnUnlock->sendActions(UIControlEvent::touchUpInside);
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall.presentedViewController());
    EXPECT_NE(login, nullptr);
    return login;
  }

  testing::TemporaryStore store_;
  PaywallHost host_{seed::kNormalArticleUrl};
  GlobalVariable& global_ = GlobalVariable::shared();
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
};

TEST_F(PaywallPurchaseFlowTest, LogInPayOpenTheWalletAndLogOut) {
  auto paywall = LoadWithCard();

  // Unlock opens the login screen for this bid; the page's message closes it.
  auto login = OpenLogin(*paywall);
  ASSERT_NE(login, nullptr);
  EXPECT_EQ(login->obBidId, paywall->obBidId);
  EXPECT_EQ(login->publisherId, seed::kPublisherId);
  const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
  ASSERT_TRUE(login->webview->postMessageFromPage("obHandler", {{"device_key", keys.deviceKey},
                                                                {"login_key", keys.loginKey}}));
  ASSERT_TRUE(host_.waitFor([&] { return paywall->presentedViewController() == nullptr && global_.isOBTokenExist(); }));
  // The login is stored whole; the bid is offered to the known reader.
  EXPECT_TRUE(paywall->isRedirectToPaywall);
  EXPECT_EQ(global_.getDeviceKey(), keys.deviceKey);
  EXPECT_EQ(global_.getEmail(), seed::kReaderEmail);
  EXPECT_EQ(global_.getCustomerId(), seed::kReaderId);
  EXPECT_FALSE(global_.getRefreshToken().empty());
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_FALSE(paywall->btnUnlock->isHidden());

  // The reader pays.
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host_.waitFor([&] { return paywall->unlockView->isHidden(); }));
  EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
  EXPECT_EQ(json::parse(sandbox_.requestsTo(sandbox::kAcceptBidPath).at(0).body),
            (json{{"oboloBidId", paywall->obBidId}, {"oboloTransactionMode", "normal"}}));

  // The splash stays 5 seconds; then the article is readable and the wallet
  // button waits on the host.
  EXPECT_FALSE(paywall->splashView->isHidden());
  EXPECT_FALSE(host_.hasFloatingButtonOnScreen());
  host_.advance(std::chrono::milliseconds(4900));
  EXPECT_FALSE(paywall->splashView->isHidden());
  host_.advance(std::chrono::milliseconds(200));
  EXPECT_TRUE(PaywallHost::isHidden(*paywall));
  EXPECT_TRUE(paywall->splashView->isHidden());
  EXPECT_TRUE(paywall->visualEffectView->isHidden());
  ASSERT_TRUE(host_.hasFloatingButtonOnScreen());

  // A tap on the button opens the wallet with the sandbox's balance.
  floatingButton(*host_.host)->sendActions(UIControlEvent::touchUpInside);
  auto wallet = std::dynamic_pointer_cast<LogoutController>(host_.host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  EXPECT_EQ(wallet->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
  ASSERT_TRUE(host_.waitFor([&] { return wallet->lblBalance->text() == "EUR 9.5"; }));

  // Logout tells the sandbox, closes the wallet, and the card comes back.
  const std::string deviceKey = global_.getDeviceKey();
  sandbox_.clearRequests();
  wallet->btnLogout->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host_.waitFor([&] { return host_.host->presentedViewController() == nullptr; }));
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(deviceKey), true);
  ASSERT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_FALSE(host_.hasFloatingButtonOnScreen());
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath).size(), 1u);
  for (const char* key : {"deviceKey", "accessToken", "refreshToken", "email", "customerId"}) {
    EXPECT_EQ(store_.store().object(key), std::nullopt) << "the store holds no session: " << key;
  }
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

TEST_F(PaywallPurchaseFlowTest, AnExpiredTokenAtTheTapIsNotValidAndNothingHappens) {
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
