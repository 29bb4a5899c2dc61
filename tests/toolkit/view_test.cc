#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/ui_gesture_recognizer.h"
#include "toolkit/ui_view.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

std::shared_ptr<UIView> View(CGRect frame = {}) { return std::make_shared<UIView>(frame); }

std::vector<UIView*> Children(const UIView& view) {
  std::vector<UIView*> out;
  for (const auto& child : view.subviews()) out.push_back(child.get());
  return out;
}

TEST(GeometryTest, RectEdgesMiddlesAndInset) {
  const CGRect r(10, 20, 100, 50);
  EXPECT_EQ(r.minX(), 10);
  EXPECT_EQ(r.maxX(), 110);
  EXPECT_EQ(r.midX(), 60);
  EXPECT_EQ(r.minY(), 20);
  EXPECT_EQ(r.maxY(), 70);
  EXPECT_EQ(r.midY(), 45);
  // The floating button's socket rectangle: a 390 x 844 view inset by 24.
  EXPECT_EQ(CGRect(0, 0, 390, 844).insetBy(24, 24), CGRect(24, 24, 342, 796));
  EXPECT_EQ(r.insetBy(-5, 5), CGRect(5, 25, 110, 40));
}

TEST(UIViewTest, FrameCenterAndBoundsStayConsistent) {
  auto view = View(CGRect(10, 20, 100, 50));
  EXPECT_EQ(view->bounds(), CGRect(0, 0, 100, 50));
  EXPECT_EQ(view->center(), (CGPoint{60, 45}));

  view->setCenter(CGPoint{200, 300});
  EXPECT_EQ(view->frame(), CGRect(150, 275, 100, 50));
  EXPECT_EQ(view->bounds(), CGRect(0, 0, 100, 50));

  view->setBounds(CGRect(0, 0, 40, 10));  // grows and shrinks about the centre
  EXPECT_EQ(view->frame(), CGRect(180, 295, 40, 10));
  EXPECT_EQ(view->center(), (CGPoint{200, 300}));
}

TEST(UIViewTest, SubviewsKeepOrderAndMoveBetweenSuperviews) {
  auto a = View(), b = View(), c = View(), other = View();
  auto root = View();
  root->addSubview(a);
  root->addSubview(b);
  root->insertSubview(c, 0);
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{c.get(), a.get(), b.get()}));

  root->addSubview(c);  // added again: to the top
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{a.get(), b.get(), c.get()}));
  root->insertSubviewBelow(c, a);
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{c.get(), a.get(), b.get()}));
  root->insertSubviewAbove(c, a);
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{a.get(), c.get(), b.get()}));

  other->addSubview(a);  // taken from its old superview
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{c.get(), b.get()}));
  EXPECT_EQ(a->superview(), other);

  b->removeFromSuperview();
  EXPECT_EQ(b->superview(), nullptr);
  EXPECT_EQ(Children(*root), (std::vector<UIView*>{c.get()}));
}

TEST(UIViewTest, RefusesToMakeACycle) {
  auto root = View(), child = View(), grandchild = View();
  root->addSubview(child);
  child->addSubview(grandchild);
  grandchild->addSubview(root);
  child->addSubview(child);
  EXPECT_EQ(root->superview(), nullptr);
  EXPECT_EQ(child->superview(), root);
  EXPECT_EQ(child->subviews().size(), 1u);
}

TEST(UIViewTest, SuperviewIsWeakSoDroppingTheRootReleasesTheTree) {
  auto child = View();
  std::weak_ptr<UIView> root_watch;
  std::weak_ptr<UIView> grandchild_watch;
  {
    auto root = View();
    auto grandchild = View();
    root->addSubview(child);
    child->addSubview(grandchild);
    root_watch = root;
    grandchild_watch = grandchild;
  }
  EXPECT_TRUE(root_watch.expired());
  EXPECT_EQ(child->superview(), nullptr);
  EXPECT_FALSE(grandchild_watch.expired()) << "a view owns its subviews";
}

TEST(UIViewTest, RemovingAViewOwnedOnlyByItsSuperviewIsSafe) {
  auto root = View();
  std::weak_ptr<UIView> watch;
  {
    auto child = View();
    root->addSubview(child);
    watch = child;
  }
  watch.lock()->removeFromSuperview();
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(root->subviews().empty());
}

// How a 100 x 100 child at (10, 20) in a 200 x 300 superview follows the
// superview growing to 300 x 500.
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
    child->setAutoresizingMask(c.mask);
    parent->addSubview(child);
    parent->setFrame(CGRect(0, 0, 300, 500));
    EXPECT_EQ(child->frame(), c.expected) << RawValue(c.mask);
  }
}

TEST(UIViewTest, AutoresizingCascadesAndCanBeSwitchedOff) {
  using enum UIViewAutoresizing;
  auto root = View(CGRect(0, 0, 100, 100));
  auto middle = View(CGRect(0, 0, 100, 100));
  auto leaf = View(CGRect(0, 0, 100, 100));
  middle->setAutoresizingMask(flexibleWidth | flexibleHeight);
  leaf->setAutoresizingMask(flexibleWidth | flexibleHeight);
  root->addSubview(middle);
  middle->addSubview(leaf);

  root->setBounds(CGRect(0, 0, 150, 120));
  EXPECT_EQ(leaf->frame(), CGRect(0, 0, 150, 120));

  root->setAutoresizesSubviews(false);
  root->setBounds(CGRect(0, 0, 50, 50));
  EXPECT_EQ(middle->frame(), CGRect(0, 0, 150, 120));
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
  EXPECT_EQ(label->window(), window);

  container->setHidden(true);
  EXPECT_FALSE(label->isVisibleOnScreen());
  container->setHidden(false);
  container->setAlpha(0);
  EXPECT_FALSE(label->isVisibleOnScreen());
  container->setAlpha(1);
  window->setHidden(true);
  EXPECT_FALSE(label->isVisibleOnScreen());
}

TEST(UIViewTest, TintIsInheritedUntilSet) {
  auto parent = View(), child = View();
  parent->addSubview(child);
  EXPECT_EQ(child->tintColor(), UIColor::systemBlue());
  parent->setTintColor(UIColor::white());
  EXPECT_EQ(child->tintColor(), UIColor::white());
  child->setTintColor(UIColor::black());
  EXPECT_EQ(child->tintColor(), UIColor::black());
}

TEST(UIViewTest, ViewWithTagSearchesTheSubtree) {
  auto root = View(), a = View(), b = View();
  a->setTag(2);
  b->setTag(7);
  root->addSubview(a);
  a->addSubview(b);
  EXPECT_EQ(root->viewWithTag(7), b);
  EXPECT_EQ(root->viewWithTag(3), nullptr);
}

TEST(UIViewTest, AnimateAppliesAtOnceRecordsTheDurationAndCompletesLater) {
  MainLoop::main().useVirtualTime();
  auto view = View(CGRect(0, 0, 10, 10));
  bool completed = false;
  UIView::animate(
      0.3,
      [&] {
        view->setCenter(CGPoint{50, 50});
      },
      [&](bool finished) { completed = finished; });
  EXPECT_EQ(view->center(), (CGPoint{50, 50}));
  EXPECT_EQ(UIView::lastAnimationDuration(), 0.3);
  EXPECT_FALSE(completed);
  MainLoop::main().runFor(std::chrono::seconds(0));
  EXPECT_TRUE(completed);
}

TEST(UIViewTest, GestureRecognizerBelongsToOneViewAndRefersToItWeakly) {
  auto recognizer = std::make_shared<UIGestureRecognizer>();
  auto first = View(), second = View();
  first->addGestureRecognizer(recognizer);
  EXPECT_EQ(recognizer->view(), first);
  second->addGestureRecognizer(recognizer);
  EXPECT_EQ(recognizer->view(), second);
  EXPECT_TRUE(first->gestureRecognizers().empty());
  second.reset();
  EXPECT_EQ(recognizer->view(), nullptr);
}

}  // namespace
}  // namespace obolo
