#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "platform/main_loop.h"
#include "toolkit/ui_alert_controller.h"
#include "ui/view_controller_helpers.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(ShowSimpleAlertTest, OneOkActionThatDismissesThenRunsTheGivenAction) {
  MainLoop::main().useVirtualTime();
  auto host = std::make_shared<UIViewController>();
  showSimpleAlert(host, "Saved");
  auto plain = std::dynamic_pointer_cast<UIAlertController>(host->presentedViewController());
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain->message(), "Saved");
  ASSERT_EQ(plain->actions().size(), 1u);
  EXPECT_EQ(plain->actions()[0]->title(), "OK");
  EXPECT_FALSE(plain->tintColor().has_value()) << "the clear default colours nothing";
  plain->tap(plain->actions()[0]);
  MainLoop::main().runFor(1s);
  EXPECT_EQ(host->presentedViewController(), nullptr);

  int ran = 0;
  showSimpleAlert(host, "Logged out", "Wallet", UIColor::black(), "Fine", [&] {
    ++ran;
    EXPECT_EQ(host->presentedViewController(), nullptr) << "the alert is gone when the action runs";
  });
  auto alert = std::dynamic_pointer_cast<UIAlertController>(host->presentedViewController());
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->title(), "Wallet");
  EXPECT_EQ(alert->tintColor(), UIColor::black());
  EXPECT_EQ(alert->actions()[0]->title(), "Fine");
  MainLoop::main().runFor(0s);
  alert->tap(alert->actions()[0]);
  EXPECT_EQ(ran, 0);
  MainLoop::main().runFor(1s);
  EXPECT_EQ(ran, 1);
}

}  // namespace
}  // namespace obolo
