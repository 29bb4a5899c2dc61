#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_navigation_controller.h"
#include "toolkit/ui_screen.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

// Records its life cycle in a shared journal.
class Recorder : public UIViewController {
 public:
  explicit Recorder(std::vector<std::string>* journal, std::string name = "vc")
      : journal_(journal), name_(std::move(name)) {}

  void loadView() override {
    journal_->push_back(name_ + ".loadView");
    UIViewController::loadView();
    view()->setTag(99);
  }
  void viewDidLoad() override {
    UIViewController::viewDidLoad();
    // Asking for the view inside viewDidLoad must neither reload nor recurse.
    journal_->push_back(name_ + ".viewDidLoad tag=" + std::to_string(view()->tag()));
  }
  void viewWillAppear(bool) override { journal_->push_back(name_ + ".viewWillAppear"); }
  void viewDidAppear(bool) override { journal_->push_back(name_ + ".viewDidAppear"); }
  void viewWillDisappear(bool) override { journal_->push_back(name_ + ".viewWillDisappear"); }
  void viewDidDisappear(bool) override { journal_->push_back(name_ + ".viewDidDisappear"); }

 private:
  std::vector<std::string>* journal_;
  std::string name_;
};

class ViewControllerTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }
  void Settle() { MainLoop::main().runFor(0s); }

  std::vector<std::string> journal;
};

TEST_F(ViewControllerTest, ViewLoadsLazilyOnceLoadViewThenViewDidLoad) {
  auto vc = std::make_shared<Recorder>(&journal);
  EXPECT_FALSE(vc->isViewLoaded());
  EXPECT_EQ(vc->viewIfLoaded(), nullptr);
  EXPECT_TRUE(journal.empty());

  auto view = vc->view();
  EXPECT_TRUE(vc->isViewLoaded());
  EXPECT_EQ(vc->view(), view);
  EXPECT_EQ(journal, (std::vector<std::string>{"vc.loadView", "vc.viewDidLoad tag=99"}));
}

TEST_F(ViewControllerTest, DefaultViewIsTheMainScreensSizeAndFollowsItsSuperview) {
  UIScreen::main().setBounds(CGRect(0, 0, 320, 568));
  auto vc = std::make_shared<UIViewController>();
  EXPECT_EQ(vc->view()->frame(), CGRect(0, 0, 320, 568));
  EXPECT_EQ(vc->view()->autoresizingMask(),
            UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  UIScreen::main().setBounds(CGRect(0, 0, 390, 844));
}

TEST_F(ViewControllerTest, ChildrenKeepOrderAndReferToTheirParentWeakly) {
  auto parent = std::make_shared<UIViewController>();
  auto a = std::make_shared<UIViewController>(), b = std::make_shared<UIViewController>();
  parent->addChild(a);
  parent->addChild(b);
  parent->addChild(a);  // already a child: unchanged
  ASSERT_EQ(parent->children().size(), 2u);
  EXPECT_EQ(parent->children()[0], a);
  EXPECT_EQ(a->parent(), parent);

  b->removeFromParent();
  EXPECT_EQ(b->parent(), nullptr);
  EXPECT_EQ(parent->children().size(), 1u);

  a->addChild(parent);  // would be a cycle
  EXPECT_TRUE(a->children().empty());

  std::weak_ptr<UIViewController> watch = parent;
  parent.reset();
  EXPECT_TRUE(watch.expired()) << "a child must not keep its parent alive";
  EXPECT_EQ(a->parent(), nullptr);
}

TEST_F(ViewControllerTest, PresentationCompletesOnALaterTurnAfterTheCallReturns) {
  auto host = std::make_shared<Recorder>(&journal, "host");
  auto sheet = std::make_shared<Recorder>(&journal, "sheet");
  bool completed = false;
  host->present(sheet, true, [&] {
    journal.push_back("completion");
    completed = true;
  });
  journal.push_back("present returned");
  EXPECT_EQ(host->presentedViewController(), sheet);
  EXPECT_EQ(sheet->presentingViewController(), host);
  EXPECT_TRUE(sheet->isBeingPresented());
  EXPECT_FALSE(completed);

  EXPECT_TRUE(MainLoop::main().runUntil([&] { return completed; }, 1s));
  EXPECT_EQ(journal,
            (std::vector<std::string>{"sheet.loadView", "sheet.viewDidLoad tag=99", "sheet.viewWillAppear",
                                      "present returned", "sheet.viewDidAppear", "completion"}));
  EXPECT_FALSE(sheet->isBeingPresented());
}

TEST_F(ViewControllerTest, DismissFromThePresentedControllerCompletesLaterAndCutsTheLinks) {
  auto host = std::make_shared<UIViewController>();
  auto sheet = std::make_shared<Recorder>(&journal, "sheet");
  host->present(sheet, true);
  Settle();
  journal.clear();

  bool dismissed = false;
  sheet->dismiss(true, [&] {
    journal.push_back("completion");
    dismissed = true;
  });
  journal.push_back("dismiss returned");
  EXPECT_EQ(host->presentedViewController(), sheet) << "the transition is still running";
  EXPECT_TRUE(sheet->isBeingDismissed());

  EXPECT_TRUE(MainLoop::main().runUntil([&] { return dismissed; }, 1s));
  EXPECT_EQ(journal, (std::vector<std::string>{"sheet.viewWillDisappear", "dismiss returned",
                                               "sheet.viewDidDisappear", "completion"}));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(sheet->presentingViewController(), nullptr);
}

TEST_F(ViewControllerTest, DismissFromThePresenterRemovesEverythingAboveIt) {
  auto host = std::make_shared<UIViewController>();
  auto first = std::make_shared<Recorder>(&journal, "first");
  auto second = std::make_shared<Recorder>(&journal, "second");
  host->present(first, false);
  Settle();
  first->present(second, false);
  Settle();
  journal.clear();

  bool done = false;
  host->dismiss(false, [&] { done = true; });
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return done; }, 1s));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(first->presentedViewController(), nullptr);
  EXPECT_EQ(journal, (std::vector<std::string>{"second.viewWillDisappear", "first.viewWillDisappear",
                                               "second.viewDidDisappear", "first.viewDidDisappear"}));
}

TEST_F(ViewControllerTest, PresentingTwiceOrDismissingNothingIsRefusedWithoutCompletion) {
  testing::LogCapture log;
  auto host = std::make_shared<UIViewController>();
  auto first = std::make_shared<UIViewController>();
  auto second = std::make_shared<UIViewController>();
  int completions = 0;
  host->present(first, true, [&] { ++completions; });
  host->present(second, true, [&] { ++completions; });
  EXPECT_EQ(host->presentedViewController(), first);
  EXPECT_EQ(log.lines().size(), 1u);

  auto lonely = std::make_shared<UIViewController>();
  lonely->dismiss(true, [&] { ++completions; });
  MainLoop::main().runFor(1s);
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(second->presentingViewController(), nullptr);
}

TEST_F(ViewControllerTest, AChildPresentsOnBehalfOfItsRoot) {
  auto host = std::make_shared<UIViewController>();
  auto child = std::make_shared<UIViewController>();
  host->addChild(child);
  auto sheet = std::make_shared<UIViewController>();
  child->present(sheet, true);
  EXPECT_EQ(sheet->presentingViewController(), host);
  EXPECT_EQ(child->presentedViewController(), sheet);
  EXPECT_EQ(host->presentedViewController(), sheet);
}

TEST_F(ViewControllerTest, PresentedViewCoversTheWindowUntilDismissed) {
  auto window = std::make_shared<UIWindow>();
  auto root = std::make_shared<UIViewController>();
  window->setRootViewController(root);
  window->makeKeyAndVisible();
  auto sheet = std::make_shared<UIViewController>();
  root->present(sheet, true);
  EXPECT_TRUE(sheet->view()->isVisibleOnScreen());
  EXPECT_EQ(sheet->view()->frame(), window->bounds());
  sheet->dismiss(true);
  Settle();
  EXPECT_FALSE(sheet->view()->isVisibleOnScreen());
  EXPECT_TRUE(root->view()->isVisibleOnScreen());
}

TEST_F(ViewControllerTest, WindowRootAppearsWhenTheWindowBecomesVisible) {
  auto window = std::make_shared<UIWindow>();
  auto root = std::make_shared<Recorder>(&journal, "root");
  auto child = std::make_shared<Recorder>(&journal, "child");
  root->addChild(child);
  window->setRootViewController(root);
  EXPECT_EQ(journal, (std::vector<std::string>{"root.loadView", "root.viewDidLoad tag=99"}));
  window->makeKeyAndVisible();
  EXPECT_EQ(journal,
            (std::vector<std::string>{"root.loadView", "root.viewDidLoad tag=99", "root.viewWillAppear",
                                      "child.viewWillAppear", "root.viewDidAppear", "child.viewDidAppear"}));
  EXPECT_EQ(root->view()->superview(), window);
}

TEST_F(ViewControllerTest, NavigationControllerIsFoundFromAnyDescendantAndHasA44PointBar) {
  auto screen = std::make_shared<UIViewController>();
  auto inner = std::make_shared<UIViewController>();
  screen->addChild(inner);
  EXPECT_EQ(screen->navigationController(), nullptr);

  auto navigation = UINavigationController::withRootViewController(screen);
  EXPECT_EQ(inner->navigationController(), navigation);
  EXPECT_EQ(screen->navigationController()->navigationBar()->bounds().height(), 44);
  EXPECT_EQ(navigation->topViewController(), screen);

  navigation->view();
  EXPECT_EQ(screen->view()->superview(), navigation->view());
  EXPECT_EQ(screen->view()->frame().minY(), 44);
  auto next = std::make_shared<UIViewController>();
  navigation->pushViewController(next, true);
  EXPECT_EQ(navigation->topViewController(), next);
  EXPECT_EQ(screen->view()->superview(), nullptr);
  EXPECT_EQ(navigation->popViewController(true), next);
  EXPECT_EQ(screen->view()->superview(), navigation->view());
}

struct FloatingButtonKey {
  static const char key;
};
const char FloatingButtonKey::key = 0;

TEST_F(ViewControllerTest, AssociatedObjectsAreRetainedAndReadBackOnlyAsTheirType) {
  auto vc = std::make_shared<UIViewController>();
  EXPECT_EQ(vc->associatedObject<UIButton>(&FloatingButtonKey::key), nullptr);

  std::weak_ptr<UIButton> watch;
  {
    auto button = std::make_shared<UIButton>();
    watch = button;
    vc->setAssociatedObject(&FloatingButtonKey::key, button);
  }
  EXPECT_FALSE(watch.expired()) << "the association retains the button";
  EXPECT_EQ(vc->associatedObject<UIButton>(&FloatingButtonKey::key), watch.lock());
  EXPECT_EQ(vc->associatedObject<UIView>(&FloatingButtonKey::key), watch.lock()) << "a button is a view";

  vc->setAssociatedObject(&FloatingButtonKey::key, std::make_shared<UILabel>());
  EXPECT_TRUE(watch.expired()) << "replacing releases the old object";
  EXPECT_EQ(vc->associatedObject<UIButton>(&FloatingButtonKey::key), nullptr) << "a label is not a button";

  std::weak_ptr<UIViewController> vc_watch = vc;
  vc.reset();
  EXPECT_TRUE(vc_watch.expired());
}

}  // namespace
}  // namespace obolo
