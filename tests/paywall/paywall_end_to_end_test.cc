// A reader's whole journey on a headless host, against the sandbox: logged out
// at first, logs in through the login screen, pays, opens the wallet from the
// floating button, logs out, and meets the card again.

#include <gtest/gtest.h>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using testing::PaywallHost;
namespace seed = sandbox::seed;

TEST(PaywallEndToEndTest, LogInPayOpenTheWalletAndLogOut) {
  testing::TemporaryStore store;
  PaywallHost host(seed::kNormalArticleUrl);
  sandbox::Sandbox& sandbox = testing::SandboxEnvironment::sandbox();
  GlobalVariable& global = GlobalVariable::shared();

  // The card, to a reader who is not logged in.
  auto paywall = host.load(Position::bottom);
  ASSERT_TRUE(host.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  // Unlock opens the login screen; the page's message closes it.
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall->presentedViewController());
  ASSERT_NE(login, nullptr);
  const auto keys = sandbox.issueLoginKeys(seed::kReaderEmail).value();
  login->webview->postMessageFromPage("obHandler", {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}});
  ASSERT_TRUE(host.waitFor([&] { return paywall->presentedViewController() == nullptr && global.isOBTokenExist(); }));
  EXPECT_EQ(global.getDeviceKey(), keys.deviceKey);
  EXPECT_EQ(global.getEmail(), seed::kReaderEmail);
  ASSERT_TRUE(host.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));

  // The reader pays; after the splash the wallet button waits on the host.
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host.waitFor([&] { return paywall->unlockView->isHidden(); }));
  host.advance(std::chrono::seconds(5));
  ASSERT_TRUE(host.hasFloatingButtonOnScreen());
  EXPECT_TRUE(PaywallHost::isHidden(*paywall));

  // A tap on the button opens the wallet with the sandbox's balance.
  floatingButton(*host.host)->sendActions(UIControlEvent::touchUpInside);
  auto wallet = std::dynamic_pointer_cast<LogoutController>(host.host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  EXPECT_EQ(wallet->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
  ASSERT_TRUE(host.waitFor([&] { return wallet->lblBalance->text() == "EUR 9.5"; }));

  // Logout tells the sandbox, closes the wallet, and the card comes back.
  const std::string deviceKey = global.getDeviceKey();
  sandbox.clearRequests();
  wallet->btnLogout->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(host.waitFor([&] { return host.host->presentedViewController() == nullptr; }));
  EXPECT_EQ(sandbox.isDeviceLoggedOut(deviceKey), true);
  ASSERT_TRUE(host.waitFor([&] { return PaywallHost::isCardShown(*paywall); }));
  EXPECT_FALSE(host.hasFloatingButtonOnScreen());
  EXPECT_EQ(sandbox.requestsTo(sandbox::kCreateLoggedOutBidPath).size(), 1u);

  // The store holds no session.
  for (const char* key : {"deviceKey", "accessToken", "refreshToken", "email", "customerId"}) {
    EXPECT_EQ(store.store().object(key), std::nullopt) << key;
  }
}

}  // namespace
}  // namespace obolo
