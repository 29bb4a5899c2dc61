#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "platform/main_loop.h"
#include "toolkit/ui_alert_controller.h"
#include "ui/view_controller_helpers.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

class ShowSimpleAlertTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }

  std::shared_ptr<UIAlertController> presentedAlert() {
    return std::dynamic_pointer_cast<UIAlertController>(host->presentedViewController());
  }

  std::shared_ptr<UIViewController> host = std::make_shared<UIViewController>();
};

TEST_F(ShowSimpleAlertTest, PresentsAnAlertWithOneOkActionAndTheDefaults) {
  showSimpleAlert(host, "Saved");
  auto alert = presentedAlert();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->preferredStyle(), UIAlertController::Style::alert);
  EXPECT_EQ(alert->title(), "");
  EXPECT_EQ(alert->message(), "Saved");
  ASSERT_EQ(alert->actions().size(), 1u);
  EXPECT_EQ(alert->actions()[0]->title(), "OK");
  EXPECT_EQ(alert->actions()[0]->style(), UIAlertAction::Style::defaultStyle);
  EXPECT_FALSE(alert->tintColor().has_value()) << "the clear default colours nothing";

  alert->tap(alert->actions()[0]);
  MainLoop::main().runFor(1s);
  EXPECT_EQ(host->presentedViewController(), nullptr);
}

TEST_F(ShowSimpleAlertTest, TheOkActionRunsAfterTheAlertIsDismissed) {
  int ran = 0;
  bool alert_gone_when_run = false;
  showSimpleAlert(host, "Logged out", "Wallet", UIColor::black(), "Fine", [&] {
    ++ran;
    alert_gone_when_run = host->presentedViewController() == nullptr;
  });
  auto alert = presentedAlert();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->title(), "Wallet");
  EXPECT_EQ(alert->tintColor(), UIColor::black());
  MainLoop::main().runFor(0s);

  ASSERT_EQ(alert->actionButtons().size(), 1u);
  EXPECT_EQ(alert->actionButtons()[0]->currentTitle(), "Fine");
  alert->actionButtons()[0]->tap();
  EXPECT_EQ(ran, 0);
  MainLoop::main().runFor(1s);
  EXPECT_EQ(ran, 1);
  EXPECT_TRUE(alert_gone_when_run);
}

}  // namespace
}  // namespace obolo
