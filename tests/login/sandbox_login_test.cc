// The screen against the sandbox's wallet site, which the environment points
// the page's origins at: the address it loads is the one the site serves its
// login page at. The keys the page hands over are followed to the stored
// session by the paywall's purchase flow.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "support/sandbox_environment.h"
#include "toolkit/ui_window.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(SandboxLoginTest, LoadsTheSitesLoginPageAndReadsTheEnvironmentOnce) {
  MainLoop::main().useVirtualTime();
  auto window = std::make_shared<UIWindow>(std::make_shared<UIWindowScene>());
  auto host = std::make_shared<UIViewController>();
  window->setRootViewController(host);
  window->makeKeyAndVisible();
  auto screen = std::make_shared<WebLoginVC>();
  screen->publisherId = sandbox::seed::kPublisherId;
  screen->obBidId = 345;
  host->present(screen, /*animated=*/true);
  MainLoop::main().runFor(0s);

  auto request = screen->webview->lastRequest();
  ASSERT_TRUE(request.has_value());
  EXPECT_EQ(request->url().absoluteString(),
            testing::SandboxEnvironment::sandbox().loginPageUrl(sandbox::seed::kPublisherId, 345));

  setenv("OBOLO_WALLET_ORIGIN", "https://elsewhere.example", 1);
  unsetenv("OBOLO_REDIRECT_ORIGIN");
  setenv("OBOLO_LOGIN_LOGO_URL", "", 1);
  EXPECT_EQ(screen->loginAddress(), request->url().absoluteString()) << "the first reading stays for the process";
}

}  // namespace
}  // namespace obolo
