#include "toolkit/ui_alert_controller.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(UIAlertControllerTest, TappingAnActionDismissesTheAlertThenRunsItsHandlerOnce) {
  MainLoop::main().useVirtualTime();
  auto host = std::make_shared<UIViewController>();
  std::vector<std::string> journal;
  auto alert = std::make_shared<UIAlertController>("Payment", "Done", UIAlertController::Style::alert);
  auto foreign = std::make_shared<UIAlertAction>("Other", UIAlertAction::Style::defaultStyle,
                                                 [&](const auto&) { journal.push_back("foreign"); });
  alert->addAction(std::make_shared<UIAlertAction>(
      "OK", UIAlertAction::Style::defaultStyle, [&](const std::shared_ptr<UIAlertAction>& action) {
        journal.push_back("handler " + *action->title());
        EXPECT_EQ(host->presentedViewController(), nullptr) << "the alert is gone when the handler runs";
      }));
  alert->addAction(std::make_shared<UIAlertAction>("Cancel", UIAlertAction::Style::cancel));
  host->present(alert, true);
  MainLoop::main().runFor(0s);
  EXPECT_EQ(alert->titleLabel()->text(), "Payment");
  EXPECT_EQ(alert->messageLabel()->text(), "Done");
  ASSERT_EQ(alert->actionButtons().size(), 2u);
  EXPECT_EQ(alert->actionButtons()[1]->currentTitle(), "Cancel");

  alert->tap(foreign);
  EXPECT_TRUE(alert->actionButtons()[0]->tap());
  EXPECT_TRUE(journal.empty()) << "the handler waits for the dismissal";
  alert->actionButtons()[0]->tap();  // a second tap while it closes does nothing
  MainLoop::main().runFor(1s);
  EXPECT_EQ(journal, (std::vector<std::string>{"handler OK"}));
}

}  // namespace
}  // namespace obolo
