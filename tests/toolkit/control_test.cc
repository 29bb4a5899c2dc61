#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_visual_effect_view.h"

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

TEST(UIButtonTest, TitleLabelAndImageViewShowTheNormalStateAndFollowChanges) {
  auto button = std::make_shared<UIButton>(CGRect(0, 0, 100, 40));
  button->setTitle("Unlock", UIControlState::normal);
  auto label = button->titleLabel();
  EXPECT_EQ(label->text(), "Unlock");
  EXPECT_EQ(label->superview(), button);

  button->setTitle("Pay now", UIControlState::normal);
  button->setTitleColor(UIColor::white(), UIControlState::normal);
  EXPECT_EQ(label->text(), "Pay now");
  EXPECT_EQ(label->textColor(), UIColor::white());

  auto image = UIImage::named("checkbox", Bundle::withIdentifier(Bundle::kKitIdentifier));
  ASSERT_NE(image, nullptr);
  button->setImage(image, UIControlState::normal);
  EXPECT_EQ(button->imageView()->image(), image);
  button->setImage(nullptr, UIControlState::normal);
  EXPECT_EQ(button->imageView()->image(), nullptr);
}

TEST(UIButtonTest, StatesWithoutTheirOwnValueUseTheNormalOnes) {
  auto button = std::make_shared<UIButton>();
  button->setTitle("Normal", UIControlState::normal);
  button->setTitle("Off", UIControlState::disabled);
  EXPECT_EQ(button->title(UIControlState::highlighted), "Normal");
  EXPECT_EQ(button->title(UIControlState::disabled), "Off");
  EXPECT_EQ(button->titleColor(UIControlState::normal), std::nullopt);

  button->setEnabled(false);
  EXPECT_EQ(button->currentTitle(), "Off");
  EXPECT_EQ(button->titleLabel()->text(), "Off");
}

TEST(UIButtonTest, AttributedTitleIsWhatTheTitleLabelShows) {
  auto button = std::make_shared<UIButton>();
  button->setTitle("Terms", UIControlState::normal);
  NSAttributedString title("Terms of use");
  title.addAttribute(NSAttributedStringKey::underlineStyle, NSUnderlineStyle::single);
  button->setAttributedTitle(title, UIControlState::normal);
  EXPECT_EQ(button->titleLabel()->text(), "Terms of use");
  ASSERT_TRUE(button->titleLabel()->attributedText().has_value());
  EXPECT_EQ(
      button->titleLabel()->attributedText()->attributeOverWholeText(NSAttributedStringKey::underlineStyle),
      NSAttributeValue(NSUnderlineStyle::single));
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

  button->removeTarget(screen.get(), UIControlEvent::touchUpInside);
  screen->calls.clear();
  button->sendActions(UIControlEvent::touchUpInside | UIControlEvent::valueChanged);
  EXPECT_EQ(screen->calls, (std::vector<std::string>{"onButton"}));
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
  EXPECT_EQ(static_cast<int>(indicator.style()), 101);
  EXPECT_TRUE(indicator.isHidden());
  indicator.startAnimating();
  EXPECT_TRUE(indicator.isAnimating());
  EXPECT_FALSE(indicator.isHidden());
  indicator.stopAnimating();
  EXPECT_TRUE(indicator.isHidden());
}

TEST(UIVisualEffectViewTest, ContentViewFillsTheEffectViewAndFollowsItsSize) {
  auto blur = std::make_shared<UIVisualEffectView>(UIBlurEffect(UIBlurEffect::Style::light));
  EXPECT_EQ(static_cast<int>(blur->effect()->style()), 1);
  blur->setFrame(CGRect(0, 0, 100, 100));
  auto content = blur->contentView();
  EXPECT_EQ(content->superview(), blur);
  blur->setFrame(CGRect(0, 0, 320, 200));
  EXPECT_EQ(content->frame(), CGRect(0, 0, 320, 200));
}

}  // namespace
}  // namespace obolo
