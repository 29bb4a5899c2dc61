#include <gtest/gtest.h>

#include <any>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_alert_controller.h"
#include "toolkit/ui_storyboard.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;
using Journal = std::vector<std::string>;

// Records its life cycle in a shared journal.
class Recorder : public UIViewController {
 public:
  Recorder(Journal* journal, std::string name) : journal_(journal), name_(std::move(name)) {}

  void loadView() override {
    journal_->push_back(name_ + ".loadView");
    UIViewController::loadView();
    view()->setTag(99);
  }
  void viewDidLoad() override {
    // Asking for the view inside viewDidLoad must neither reload nor recurse.
    journal_->push_back(name_ + ".viewDidLoad tag=" + std::to_string(view()->tag()));
  }
  void viewWillAppear(bool) override { journal_->push_back(name_ + ".viewWillAppear"); }
  void viewDidAppear(bool) override { journal_->push_back(name_ + ".viewDidAppear"); }
  void viewWillDisappear(bool) override { journal_->push_back(name_ + ".viewWillDisappear"); }
  void viewDidDisappear(bool) override { journal_->push_back(name_ + ".viewDidDisappear"); }

 private:
  Journal* journal_;
  std::string name_;
};

class ViewControllerTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }
  std::shared_ptr<Recorder> recorder(const std::string& name) { return std::make_shared<Recorder>(&journal, name); }
  Journal journal;
};

// The view loads lazily, once, when first presented: loadView then viewDidLoad.
TEST_F(ViewControllerTest, PresentAndDismissCompleteOnALaterTurnAfterTheCallReturns) {
  auto host = recorder("host");
  auto sheet = recorder("sheet");
  EXPECT_FALSE(sheet->isViewLoaded());
  host->present(sheet, true, [&] { journal.push_back("presented"); });
  journal.push_back("present returned");
  EXPECT_EQ(host->presentedViewController(), sheet);
  EXPECT_EQ(sheet->presentingViewController(), host);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return journal.back() == "presented"; }, 1s));

  sheet->dismiss(true, [&] { journal.push_back("dismissed"); });
  journal.push_back("dismiss returned");
  EXPECT_EQ(host->presentedViewController(), sheet) << "the transition is still running";
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return journal.back() == "dismissed"; }, 1s));
  EXPECT_EQ(journal, (Journal{"sheet.loadView", "sheet.viewDidLoad tag=99", "sheet.viewWillAppear",
                              "present returned", "sheet.viewDidAppear", "presented",
                              "sheet.viewWillDisappear", "dismiss returned", "sheet.viewDidDisappear",
                              "dismissed"}));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(sheet->presentingViewController(), nullptr);
}

TEST_F(ViewControllerTest, PresentingTwiceOrDismissingNothingIsRefusedWithoutCompletion) {
  testing::LogCapture log;
  auto host = std::make_shared<UIViewController>();
  auto first = std::make_shared<UIViewController>();
  auto second = std::make_shared<UIViewController>();
  int completions = 0;
  host->present(first, true, [&] { ++completions; });
  host->present(second, true, [&] { ++completions; });
  std::make_shared<UIViewController>()->dismiss(true, [&] { ++completions; });
  MainLoop::main().runFor(1s);
  EXPECT_EQ(host->presentedViewController(), first);
  EXPECT_EQ(second->presentingViewController(), nullptr);
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(log.lines().size(), 1u);
}

// The paywall is a child of the host's screen: it presents through the host
// and must not keep the host alive.
TEST_F(ViewControllerTest, AChildPresentsOnBehalfOfItsRootAndHoldsItWeakly) {
  auto child = std::make_shared<UIViewController>();
  std::weak_ptr<UIViewController> watch;
  {
    auto host = std::make_shared<UIViewController>();
    watch = host;
    host->addChild(child);
    auto sheet = std::make_shared<UIViewController>();
    child->present(sheet, false);
    EXPECT_EQ(sheet->presentingViewController(), host);
    EXPECT_EQ(child->presentedViewController(), sheet);
    MainLoop::main().runFor(0s);
  }
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(child->parent(), nullptr);
}

TEST_F(ViewControllerTest, WindowRootAndItsChildrenAppearWhenTheWindowBecomesVisible) {
  auto window = std::make_shared<UIWindow>();
  auto root = recorder("root");
  root->addChild(recorder("child"));
  window->setRootViewController(root);
  window->makeKeyAndVisible();
  EXPECT_EQ(journal, (Journal{"root.loadView", "root.viewDidLoad tag=99", "root.viewWillAppear",
                              "child.viewWillAppear", "root.viewDidAppear", "child.viewDidAppear"}));
  auto sheet = std::make_shared<UIViewController>();
  root->present(sheet, true);
  EXPECT_TRUE(sheet->view()->isVisibleOnScreen());
  EXPECT_EQ(sheet->view()->frame(), window->bounds());
}

class LoginScreen : public UIViewController {
 public:
  std::string bid_id;  // set by the opener while preparing the segue
  std::string bid_id_when_loaded;
  void viewDidLoad() override { bid_id_when_loaded = bid_id; }
};

class CardScreen : public UIViewController {
 public:
  bool destination_was_presented = true;
  void prepare(const UIStoryboardSegue& segue, const std::any&) override {
    destination_was_presented = segue.destination()->presentingViewController() != nullptr;
    if (auto login = std::dynamic_pointer_cast<LoginScreen>(segue.destination())) login->bid_id = "345";
  }
};

// Each instantiation is a fresh controller of the scene's type, its view not
// yet loaded; a segue prepares its new destination, then presents it.
TEST(StoryboardTest, InstantiatesScenesAndPerformsSegues) {
  MainLoop::main().useVirtualTime();
  UIStoryboard::registerStoryboard(
      "Test", {.scenes = {{"CardID", [] { return std::make_shared<CardScreen>(); }},
                          {"LoginID", [] { return std::make_shared<LoginScreen>(); }}},
               .segues = {{"CardID", "CardToLogin", "LoginID", UIModalPresentationStyle::fullScreen}},
               .initialScene = "CardID"});
  UIStoryboard storyboard("Test");
  auto card = storyboard.instantiateViewController<CardScreen>("CardID");
  ASSERT_NE(card, nullptr);
  EXPECT_NE(card, storyboard.instantiateViewController("CardID"));
  EXPECT_FALSE(card->isViewLoaded());
  EXPECT_EQ(storyboard.instantiateViewController("NopeID"), nullptr);
  EXPECT_EQ(storyboard.instantiateViewController<LoginScreen>("CardID"), nullptr);
  EXPECT_EQ(UIStoryboard("NotRegistered").instantiateViewController("CardID"), nullptr);

  card->performSegue("CardToLogin", std::any(card));
  EXPECT_FALSE(card->destination_was_presented) << "prepare runs before the presentation";
  auto login = std::dynamic_pointer_cast<LoginScreen>(card->presentedViewController());
  ASSERT_NE(login, nullptr);
  EXPECT_EQ(login->bid_id_when_loaded, "345") << "the destination's view loads after prepare";
  EXPECT_EQ(login->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
}

TEST(UIAlertControllerTest, TappingAnActionDismissesTheAlertThenRunsItsHandlerOnce) {
  MainLoop::main().useVirtualTime();
  auto host = std::make_shared<UIViewController>();
  std::vector<std::string> journal;
  auto alert = std::make_shared<UIAlertController>("Payment", "Done", UIAlertController::Style::alert);
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

  EXPECT_TRUE(alert->actionButtons()[0]->tap());
  EXPECT_TRUE(journal.empty()) << "the handler waits for the dismissal";
  alert->actionButtons()[0]->tap();  // a second tap while it closes does nothing
  MainLoop::main().runFor(1s);
  EXPECT_EQ(journal, (std::vector<std::string>{"handler OK"}));
}

}  // namespace
}  // namespace obolo
