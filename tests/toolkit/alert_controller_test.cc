#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/ui_alert_controller.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

class AlertControllerTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }

  std::shared_ptr<UIViewController> host = std::make_shared<UIViewController>();
  std::vector<std::string> journal;
};

TEST_F(AlertControllerTest, ItsViewShowsTitleMessageAndOneButtonPerAction) {
  auto alert =
      std::make_shared<UIAlertController>("Payment", "Not enough funds", UIAlertController::Style::alert);
  alert->addAction(std::make_shared<UIAlertAction>("OK", UIAlertAction::Style::defaultStyle));
  alert->addAction(std::make_shared<UIAlertAction>("Cancel", UIAlertAction::Style::cancel));
  alert->view();
  EXPECT_EQ(alert->titleLabel()->text(), "Payment");
  EXPECT_EQ(alert->messageLabel()->text(), "Not enough funds");
  ASSERT_EQ(alert->actionButtons().size(), 2u);
  EXPECT_EQ(alert->actionButtons()[1]->currentTitle(), "Cancel");
  EXPECT_EQ(static_cast<int>(alert->preferredStyle()), 1);
}

TEST_F(AlertControllerTest, TappingAnActionDismissesTheAlertThenRunsItsHandler) {
  auto alert = std::make_shared<UIAlertController>("", "Done", UIAlertController::Style::alert);
  alert->addAction(std::make_shared<UIAlertAction>(
      "OK", UIAlertAction::Style::defaultStyle, [this](const std::shared_ptr<UIAlertAction>& action) {
        journal.push_back("handler " + *action->title());
        EXPECT_EQ(host->presentedViewController(), nullptr) << "the alert is gone when the handler runs";
      }));
  host->present(alert, true);
  MainLoop::main().runFor(0s);

  EXPECT_TRUE(alert->actionButtons()[0]->tap());
  EXPECT_TRUE(journal.empty()) << "the handler waits for the dismissal";
  alert->actionButtons()[0]->tap();  // a second tap while it closes does nothing
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return !journal.empty(); }, 1s));
  MainLoop::main().runFor(1s);
  EXPECT_EQ(journal, (std::vector<std::string>{"handler OK"}));
}

TEST_F(AlertControllerTest, TapsOnAnAlertThatIsNotPresentedOrForeignActionsAreIgnored) {
  int handled = 0;
  auto alert = std::make_shared<UIAlertController>("", "", UIAlertController::Style::alert);
  auto mine = std::make_shared<UIAlertAction>("OK", UIAlertAction::Style::defaultStyle,
                                              [&](const auto&) { ++handled; });
  auto foreign = std::make_shared<UIAlertAction>("Other", UIAlertAction::Style::defaultStyle,
                                                 [&](const auto&) { ++handled; });
  alert->addAction(mine);
  alert->tap(mine);
  host->present(alert, false);
  alert->tap(foreign);
  MainLoop::main().runFor(1s);
  EXPECT_EQ(handled, 0);
  EXPECT_EQ(host->presentedViewController(), alert);
}

}  // namespace
}  // namespace obolo
