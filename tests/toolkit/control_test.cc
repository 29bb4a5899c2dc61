#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/ui_button.h"

namespace obolo {
namespace {

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

TEST(UIButtonTest, TheTitleLabelShowsTheCurrentStatesTitleFallingBackToNormal) {
  auto button = std::make_shared<UIButton>(CGRect(0, 0, 100, 40));
  button->setTitle("Unlock", UIControlState::normal);
  auto label = button->titleLabel();
  EXPECT_EQ(label->text(), "Unlock");
  button->setTitle("Pay now", UIControlState::normal);
  button->setTitleColor(UIColor::white(), UIControlState::normal);
  EXPECT_EQ(label->text(), "Pay now");
  EXPECT_EQ(label->textColor(), UIColor::white());

  button->setTitle("Off", UIControlState::disabled);
  EXPECT_EQ(button->title(UIControlState::highlighted), "Pay now");
  button->setEnabled(false);
  EXPECT_EQ(label->text(), "Off");
}

TEST(UIControlTest, ActionsRunForTheirEventsInRegistrationOrderWithTheSender) {
  auto screen = std::make_shared<Screen>();
  auto button = std::make_shared<UIButton>();
  button->addTarget(screen, &Screen::onTap, UIControlEvent::touchUpInside);
  button->addTarget(screen, &Screen::onButton, UIControlEvent::touchUpInside | UIControlEvent::valueChanged);
  button->addTarget(screen, &Screen::onAny, UIControlEvent::touchUpInside);

  button->sendActions(UIControlEvent::touchDown);
  EXPECT_TRUE(screen->calls.empty());
  button->sendActions(UIControlEvent::touchUpInside);
  EXPECT_EQ(screen->calls, (std::vector<std::string>{"onTap", "onButton", "onAny"}));
  EXPECT_EQ(screen->last_sender, button);
}

TEST(UIControlTest, TargetsAreHeldWeakly) {
  auto button = std::make_shared<UIButton>();
  auto screen = std::make_shared<Screen>();
  std::weak_ptr<Screen> watch = screen;
  button->addTarget(screen, &Screen::onTap, UIControlEvent::touchUpInside);
  screen.reset();
  EXPECT_TRUE(watch.expired()) << "the button must not keep its target alive";
  button->sendActions(UIControlEvent::touchUpInside);  // and must not call a dead one
}

TEST(UIControlTest, AReadersTapNeedsAnEnabledShownInteractiveControl) {
  auto screen = std::make_shared<Screen>();
  auto container = std::make_shared<UIView>();
  auto button = std::make_shared<UIButton>();
  container->addSubview(button);
  button->addTarget(screen, &Screen::onTap, UIControlEvent::touchUpInside);

  EXPECT_TRUE(button->tap());
  container->setHidden(true);
  EXPECT_FALSE(button->tap());
  container->setHidden(false);
  container->setUserInteractionEnabled(false);
  EXPECT_FALSE(button->tap());
  container->setUserInteractionEnabled(true);
  button->setEnabled(false);
  EXPECT_FALSE(button->tap());
  EXPECT_EQ(screen->calls.size(), 1u);
}

TEST(UIActivityIndicatorViewTest, HidesWhileStopped) {
  UIActivityIndicatorView indicator(UIActivityIndicatorView::Style::large);
  EXPECT_TRUE(indicator.isHidden());
  indicator.startAnimating();
  EXPECT_FALSE(indicator.isHidden());
  indicator.stopAnimating();
  EXPECT_TRUE(indicator.isHidden());
}

}  // namespace
}  // namespace obolo
