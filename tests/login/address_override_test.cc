// The login page's origins come from the environment when set, read once at
// first use (the sandbox login test points them at the sandbox). This case
// runs in a process of its own and sets the variable before anything reads it.

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
