// The screen against the sandbox's wallet site: the address it loads is the
// one the site serves its login page at, and the keys the page hands over
// reach the opener unchanged.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "login/web_login_vc.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "support/sandbox_environment.h"
#include "toolkit/ui_window.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(SandboxLoginTest, LoadsTheSitesLoginPageAndHandsItsKeysToTheOpener) {
  auto& sandbox = testing::SandboxEnvironment::sandbox();
  MainLoop::main().useVirtualTime();
  auto window = std::make_shared<UIWindow>(std::make_shared<UIWindowScene>());
  auto host = std::make_shared<UIViewController>();
  window->setRootViewController(host);
  window->makeKeyAndVisible();

  auto screen = std::make_shared<WebLoginVC>();
  screen->publisherId = sandbox::seed::kPublisherId;
  screen->obBidId = 345;
  std::optional<sandbox::LoginKeys> received;
  screen->callback = [&](std::string deviceKey, std::string loginKey) {
    received = sandbox::LoginKeys{std::move(deviceKey), std::move(loginKey)};
  };
  host->present(screen, /*animated=*/true);
  MainLoop::main().runFor(0s);

  auto request = screen->webview->lastRequest();
  ASSERT_TRUE(request.has_value());
  EXPECT_EQ(request->url().absoluteString(), sandbox.loginPageUrl(sandbox::seed::kPublisherId, 345));

  auto keys = sandbox.issueLoginKeys(sandbox::seed::kReaderEmail);
  ASSERT_TRUE(keys.has_value());
  screen->webview->postMessageFromPage("obHandler", {{"device_key", keys->deviceKey}, {"login_key", keys->loginKey}});
  MainLoop::main().runFor(0s);
  ASSERT_TRUE(received.has_value());
  EXPECT_EQ(received->deviceKey, keys->deviceKey);
  EXPECT_EQ(received->loginKey, keys->loginKey);
  EXPECT_EQ(host->presentedViewController(), nullptr);
}

}  // namespace
}  // namespace obolo
