// The floating button's tap, end to end: the kit's storyboard opens the wallet
// screen, which fetches the balance from the sandbox.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "entry/global_variable.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "support/log_capture.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(FloatingButtonTapTest, OpensTheWalletFullScreenFromTheKitsStoryboard) {
  testing::TemporaryStore store;
  testing::LogCapture log;
  MainLoop::main().useVirtualTime();
  auto session = testing::SandboxEnvironment::sandbox().createSession(sandbox::seed::kReaderEmail);
  ASSERT_TRUE(session.has_value());
  GlobalVariable& global = GlobalVariable::shared();
  global.setAccessToken(session->accessToken);
  global.setCustomerId(session->customerId);
  global.setPublisherId(sandbox::seed::kPublisherId);

  auto host = std::make_shared<UIViewController>();
  addFloatingButton(*host, 0);
  MainLoop::main().advance(1ms);
  auto button = floatingButton(*host);
  ASSERT_NE(button, nullptr);
  ASSERT_TRUE(button->tap()) << "a reader can reach the button";

  EXPECT_NE(log.indexOf("tapped"), -1);
  auto wallet = std::dynamic_pointer_cast<LogoutController>(host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  EXPECT_EQ(wallet->sceneIdentifier(), "LogoutControllerID");
  EXPECT_EQ(wallet->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return wallet->lblBalance->text() == "EUR 10.0"; }, 10s));
}

}  // namespace
}  // namespace obolo
