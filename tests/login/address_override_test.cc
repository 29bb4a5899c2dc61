// The login page's origins come from the environment when set, read once at
// first use. Each case runs in a process of its own and sets the variables
// before anything reads them.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(LoginAddressOverrideTest, EnvironmentPointsThePageElsewhereAndIsReadOnce) {
  setenv("OBOLO_WALLET_ORIGIN", "https://127.0.0.1:8443", 1);
  setenv("OBOLO_REDIRECT_ORIGIN", "https://localhost:9443", 1);
  setenv("OBOLO_LOGIN_LOGO_URL", "https://127.0.0.1:8443/assets/publisher-logo.png", 1);

  WebLoginVC screen;
  screen.publisherId = 7;
  screen.obBidId = -8;
  const std::string expected =
      "https://127.0.0.1:8443/?login_source=ios_paywall&login_publisher_id=7"
      "&login_publisher_logo_url=https://127.0.0.1:8443/assets/publisher-logo.png"
      "&login_publisher_bid_id=-8&login_redirect_url=https://localhost:9443/window-mode/index.html";
  EXPECT_EQ(screen.loginAddress(), expected);

  setenv("OBOLO_WALLET_ORIGIN", "https://elsewhere.example", 1);
  unsetenv("OBOLO_REDIRECT_ORIGIN");
  setenv("OBOLO_LOGIN_LOGO_URL", "", 1);
  EXPECT_EQ(screen.loginAddress(), expected) << "the first reading stays for the process";
}

TEST(LoginAddressOverrideTest, EmptyVariablesKeepTheProductionOrigins) {
  setenv("OBOLO_WALLET_ORIGIN", "", 1);
  unsetenv("OBOLO_REDIRECT_ORIGIN");
  setenv("OBOLO_LOGIN_LOGO_URL", "", 1);
  EXPECT_EQ(LOGIN_WALLET_ORIGIN(), "https://wallet.obolo.io");
  EXPECT_EQ(LOGIN_REDIRECT_ORIGIN(), "https://app.obolo.io");
  EXPECT_EQ(LOGIN_LOGO_URL(), "https://wallet.obolo.io/assets/publisher-logo.png");
}

TEST(LoginAddressOverrideTest, MalformedOverrideLeavesThePageUnloadedAndTheScreenUsable) {
  setenv("OBOLO_WALLET_ORIGIN", "https://wallet obolo", 1);
  MainLoop::main().useVirtualTime();
  testing::LogCapture log;
  auto window = std::make_shared<UIWindow>(std::make_shared<UIWindowScene>());
  auto host = std::make_shared<UIViewController>();
  window->setRootViewController(host);
  window->makeKeyAndVisible();

  auto screen = std::make_shared<WebLoginVC>();
  int calls = 0;
  screen->callback = [&](std::string, std::string) { ++calls; };
  host->present(screen, /*animated=*/true);
  MainLoop::main().runFor(0s);

  EXPECT_TRUE(screen->webview->loadedRequests().empty());
  EXPECT_TRUE(log.contains(screen->loginAddress())) << "the address is still written out";
  EXPECT_TRUE(log.contains("Not a valid login address; the login page is not loaded"));

  // The reader can still leave.
  auto done = std::dynamic_pointer_cast<UIButton>(screen->view()->viewWithTag(kWebLoginDoneButtonTag));
  ASSERT_NE(done, nullptr);
  ASSERT_TRUE(done->tap());
  MainLoop::main().runFor(0s);
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace obolo
