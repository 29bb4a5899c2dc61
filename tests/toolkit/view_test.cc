#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/ui_view.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

std::shared_ptr<UIView> View(CGRect frame = {}) { return std::make_shared<UIView>(frame); }

TEST(UIViewTest, SubviewsKeepOrderMoveBetweenSuperviewsAndOwnOnlyDownwards) {
  auto a = View(), b = View(), other = View();
  std::weak_ptr<UIView> root_watch, only_owned_by_root;
  {
    auto root = View();
    root_watch = root;
    root->addSubview(a);
    root->addSubview(b);
    root->addSubview(a);  // added again: to the top
    EXPECT_EQ(root->subviews(), (std::vector<std::shared_ptr<UIView>>{b, a}));
    other->addSubview(a);  // taken from its old superview
    EXPECT_EQ(root->subviews(), (std::vector<std::shared_ptr<UIView>>{b}));
    EXPECT_EQ(a->superview(), other);

    auto owned = View();
    only_owned_by_root = owned;
    root->addSubview(owned);
    owned.reset();
    only_owned_by_root.lock()->removeFromSuperview();  // must not touch freed memory
    EXPECT_TRUE(only_owned_by_root.expired());
  }
  EXPECT_TRUE(root_watch.expired()) << "a subview must not keep its superview alive";
  EXPECT_EQ(b->superview(), nullptr);
}

// How a 100 x 100 child at (10, 20) in a 200 x 300 superview follows the
// superview growing to 300 x 500, and a grandchild follows the child.
TEST(UIViewTest, AutoresizingFollowsTheSuperviewsSize) {
  using enum UIViewAutoresizing;
  struct Case {
    UIViewAutoresizing mask;
    CGRect expected;
  } cases[] = {
      {none, CGRect(10, 20, 100, 100)},
      {flexibleWidth | flexibleHeight, CGRect(10, 20, 200, 300)},
      {flexibleLeftMargin | flexibleTopMargin, CGRect(110, 220, 100, 100)},
      {flexibleRightMargin | flexibleBottomMargin, CGRect(10, 20, 100, 100)},
      // Shared in proportion: left 10 : width 100 : right 90 of a change of 100.
      {flexibleLeftMargin | flexibleWidth | flexibleRightMargin, CGRect(15, 20, 150, 100)},
  };
  for (const auto& c : cases) {
    auto parent = View(CGRect(0, 0, 200, 300));
    auto child = View(CGRect(10, 20, 100, 100));
    auto grandchild = View(CGRect(0, 0, 100, 100));
    child->setAutoresizingMask(c.mask);
    grandchild->setAutoresizingMask(flexibleWidth | flexibleHeight);
    parent->addSubview(child);
    child->addSubview(grandchild);
    parent->setFrame(CGRect(0, 0, 300, 500));
    EXPECT_EQ(child->frame(), c.expected) << RawValue(c.mask);
    EXPECT_EQ(grandchild->frame().size, c.expected.size) << RawValue(c.mask);
  }
}

TEST(UIViewTest, VisibleOnScreenNeedsEveryAncestorShownAndAWindow) {
  auto window = std::make_shared<UIWindow>();
  window->makeKeyAndVisible();
  auto container = View(), label = View();
  container->addSubview(label);
  EXPECT_TRUE(label->isShownInHierarchy());
  EXPECT_FALSE(label->isVisibleOnScreen()) << "not in a window";
  window->addSubview(container);
  EXPECT_TRUE(label->isVisibleOnScreen());

  container->setHidden(true);
  EXPECT_FALSE(label->isVisibleOnScreen());
  container->setHidden(false);
  container->setAlpha(0);
  EXPECT_FALSE(label->isVisibleOnScreen());
  container->setAlpha(1);
  window->setHidden(true);
  EXPECT_FALSE(label->isVisibleOnScreen());
}

TEST(UIViewTest, AnimateAppliesAtOnceAndCompletesLater) {
  MainLoop::main().useVirtualTime();
  auto view = View(CGRect(0, 0, 10, 10));
  bool completed = false;
  UIView::animate(
      0.3, [&] { view->setCenter(CGPoint{50, 50}); }, [&](bool finished) { completed = finished; });
  EXPECT_EQ(view->center(), (CGPoint{50, 50}));
  EXPECT_FALSE(completed);
  MainLoop::main().runFor(std::chrono::seconds(0));
  EXPECT_TRUE(completed);
}

}  // namespace
}  // namespace obolo
