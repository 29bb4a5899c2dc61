#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/ui_application.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_view.h"
#include "toolkit/ui_window.h"
#include "toolkit/url.h"

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

// A screen-like target with the three action shapes screens use.
struct Screen : NSObject {
  std::vector<std::string> calls;
  std::shared_ptr<UIButton> last_sender;
  void onTap() { calls.push_back("onTap"); }
  void onButton(const std::shared_ptr<UIButton>& sender) {
    calls.push_back("onButton");
    last_sender = sender;
  }
  void onAny(const std::any& sender) {
    calls.push_back(std::any_cast<std::shared_ptr<UIControl>>(sender) ? "onAny" : "onAny(null)");
  }
};

TEST(UIButtonTest, TheTitleLabelShowsTheTitleOtherStatesFallingBackToNormal) {
  auto button = std::make_shared<UIButton>(CGRect(0, 0, 100, 40));
  button->setTitle("Unlock", UIControlState::normal);
  auto label = button->titleLabel();
  EXPECT_EQ(label->text(), "Unlock");
  button->setTitle("Pay now", UIControlState::normal);
  button->setTitleColor(UIColor::white(), UIControlState::normal);
  EXPECT_EQ(label->text(), "Pay now");
  EXPECT_EQ(label->textColor(), UIColor::white());
  EXPECT_EQ(button->title(UIControlState::highlighted), "Pay now");
}

TEST(UIControlTest, ActionsRunForTheirEventsInRegistrationOrderWithTheSenderOnWeaklyHeldTargets) {
  auto screen = std::make_shared<Screen>();
  std::weak_ptr<Screen> watch = screen;
  auto button = std::make_shared<UIButton>();
  button->addTarget(screen, &Screen::onTap, UIControlEvent::touchUpInside);
  button->addTarget(screen, &Screen::onButton, UIControlEvent::touchUpInside | UIControlEvent::valueChanged);
  button->addTarget(screen, &Screen::onAny, UIControlEvent::touchUpInside);

  button->sendActions(UIControlEvent::touchDown);
  EXPECT_TRUE(screen->calls.empty());
  button->sendActions(UIControlEvent::touchUpInside);
  EXPECT_EQ(screen->calls, (std::vector<std::string>{"onTap", "onButton", "onAny"}));
  EXPECT_EQ(screen->last_sender, button);

  screen.reset();
  EXPECT_TRUE(watch.expired()) << "the button must not keep its target alive";
  button->sendActions(UIControlEvent::touchUpInside);  // and must not call a dead one
}

// What a reader can see: every ancestor shown and opaque, in a shown window;
// a tap also needs the control enabled and taking touches.
TEST(UIControlTest, AReadersTapNeedsAControlVisibleOnScreenEnabledAndInteractive) {
  auto window = std::make_shared<UIWindow>();
  window->makeKeyAndVisible();
  auto screen = std::make_shared<Screen>();
  auto container = std::make_shared<UIView>();
  auto button = std::make_shared<UIButton>();
  container->addSubview(button);
  button->addTarget(screen, &Screen::onTap, UIControlEvent::touchUpInside);
  EXPECT_FALSE(button->isVisibleOnScreen()) << "not in a window";
  window->addSubview(container);
  EXPECT_TRUE(button->isVisibleOnScreen());
  EXPECT_TRUE(button->tap());

  container->setHidden(true);
  EXPECT_FALSE(button->isVisibleOnScreen());
  EXPECT_FALSE(button->tap());
  container->setHidden(false);
  container->setAlpha(0);
  EXPECT_FALSE(button->isVisibleOnScreen());
  container->setAlpha(1);
  container->setUserInteractionEnabled(false);
  EXPECT_FALSE(button->tap());
  container->setUserInteractionEnabled(true);
  button->setEnabled(false);
  EXPECT_FALSE(button->tap());
  button->setEnabled(true);
  window->setHidden(true);
  EXPECT_FALSE(button->isVisibleOnScreen());
  EXPECT_EQ(screen->calls.size(), 1u);
}

// The host owns its windows: one it releases leaves the application's list
// rather than living on with everything it shows.
TEST(UIApplicationTest, ListsVisibleWindowsInOrderWithoutKeepingThem) {
  auto first = std::make_shared<UIWindow>();
  auto second = std::make_shared<UIWindow>();
  first->makeKeyAndVisible();
  second->makeKeyAndVisible();
  first->makeKeyAndVisible();
  EXPECT_EQ(UIApplication::shared().windows(), (std::vector<std::shared_ptr<UIWindow>>{first, second}));
  EXPECT_TRUE(first->isKeyWindow());
  std::weak_ptr<UIWindow> released = first;
  first.reset();
  EXPECT_TRUE(released.expired());
  EXPECT_EQ(UIApplication::shared().windows(), (std::vector<std::shared_ptr<UIWindow>>{second}));
  EXPECT_EQ(UIApplication::shared().keyWindow(), nullptr);
}

TEST(URLTest, OnlyWellFormedTextMakesAURL) {
  struct Case {
    const char* text;
    bool valid;
  } cases[] = {
      {"https://obolo.io/terms", true},
      {"mailto:support@obolo.io", true},
      {"http://127.0.0.1:8080/logo.png?size=2&x=%20#top", true},
      {"logo.png", true},  // a relative reference
      {"", false},
      {"not a url", false},
      {"https://obolo.io/a b", false},
      {"50%", false},
      {"https://obolo.io/%zz", false},
      {"https://obolo.io/<logo>", false},
      {"https://obolo.io/#a#b", false},
      {"https://obolo.io/caf\xC3\xA9", false},
  };
  for (const auto& c : cases) EXPECT_EQ(URL::fromString(c.text).has_value(), c.valid) << c.text;
  EXPECT_EQ(URL::fromString("HTTPS://user@Obolo.io:443/path?q")->scheme(), "https");
}

}  // namespace
}  // namespace obolo
