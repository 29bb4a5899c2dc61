#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_button.h"
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

TEST_F(ViewControllerTest, ViewLoadsLazilyOnceLoadViewThenViewDidLoad) {
  auto vc = recorder("vc");
  EXPECT_FALSE(vc->isViewLoaded());
  EXPECT_TRUE(journal.empty());
  auto view = vc->view();
  EXPECT_EQ(vc->view(), view);
  EXPECT_EQ(journal, (Journal{"vc.loadView", "vc.viewDidLoad tag=99"}));
}

TEST_F(ViewControllerTest, PresentAndDismissCompleteOnALaterTurnAfterTheCallReturns) {
  auto host = recorder("host");
  auto sheet = recorder("sheet");
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

TEST_F(ViewControllerTest, DismissFromThePresenterRemovesEverythingAboveIt) {
  auto host = std::make_shared<UIViewController>();
  auto first = recorder("first");
  auto second = recorder("second");
  host->present(first, false);
  first->present(second, false);
  MainLoop::main().runFor(0s);
  journal.clear();

  bool done = false;
  host->dismiss(false, [&] { done = true; });
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return done; }, 1s));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(first->presentedViewController(), nullptr);
  EXPECT_EQ(journal, (Journal{"second.viewWillDisappear", "first.viewWillDisappear", "second.viewDidDisappear",
                              "first.viewDidDisappear"}));
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

TEST_F(ViewControllerTest, AssociatedObjectsAreRetainedAndReadBackOnlyAsTheirType) {
  static const char key = 0;
  auto vc = std::make_shared<UIViewController>();
  std::weak_ptr<UIButton> watch;
  {
    auto button = std::make_shared<UIButton>();
    watch = button;
    vc->setAssociatedObject(&key, button);
  }
  EXPECT_EQ(vc->associatedObject<UIButton>(&key), watch.lock()) << "the association retains the button";
  vc->setAssociatedObject(&key, std::make_shared<UILabel>());
  EXPECT_TRUE(watch.expired()) << "replacing releases the old object";
  EXPECT_EQ(vc->associatedObject<UIButton>(&key), nullptr) << "a label is not a button";
}

}  // namespace
}  // namespace obolo
