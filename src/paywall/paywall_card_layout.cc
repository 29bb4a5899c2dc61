// The paywall's views, built in code: the full-screen root with its own blur,
// the card, and the splash panel, every outlet connected and every action
// wired. Views are placed with frames and autoresizing; the constraints carry
// the constants and placement the card's logic sets.

#include <cmath>

#include "paywall/paywall_vc.h"
#include "toolkit/ui_screen.h"

namespace obolo {
namespace {

constexpr double kCardHeight = 560;
constexpr double kSplashHeight = 160;
constexpr double kSideMargin = 16;
// The splash panel's top constraint yields to its vertical one when both are
// active (the centred placement).
constexpr float kSplashTopPriority = 250;

const UIColor kBrandBlue{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1};
const UIColor kWarningRed{0.8, 0.1, 0.1, 1};

std::shared_ptr<NSLayoutConstraint> Constraint(const char* identifier, double constant, bool active) {
  return std::make_shared<NSLayoutConstraint>(identifier, constant, active);
}

std::shared_ptr<UILabel> Label(CGRect frame, int lines) {
  auto label = std::make_shared<UILabel>(frame);
  label->setNumberOfLines(lines);
  label->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  return label;
}

std::shared_ptr<UIButton> LinkButton(CGRect frame, const char* title, int tag) {
  auto button = std::make_shared<UIButton>(frame);
  button->setTitle(title, UIControlState::normal);
  button->setTitleColor(UIColor::darkGray(), UIControlState::normal);
  button->setTag(tag);
  return button;
}

}  // namespace

void PaywallVC::loadView() {
  const CGRect screen = UIScreen::main().bounds();
  const double width = screen.size.width;
  const double height = screen.size.height;
  const auto flexibleSize = UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight;
  const auto floating = UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleTopMargin |
                        UIViewAutoresizing::flexibleBottomMargin;

  auto root = std::make_shared<UIView>(CGRect{{0, 0}, {width, height}});
  root->setAutoresizingMask(flexibleSize);
  root->setBackgroundColor(UIColor::clear());

  effectView = std::make_shared<UIVisualEffectView>(UIBlurEffect(UIBlurEffect::Style::light));
  effectView->setFrame(root->bounds());
  effectView->setAutoresizingMask(flexibleSize);
  root->addSubview(effectView);

  // The card.
  const double cardWidth = width - 2 * kSideMargin;
  const double inner = cardWidth - 2 * kSideMargin;
  unlockView = std::make_shared<UIView>(
      CGRect{{kSideMargin, std::round((height - kCardHeight) / 2)}, {cardWidth, kCardHeight}});
  unlockView->setAutoresizingMask(floating);
  unlockView->setBackgroundColor(UIColor::white());
  unlockView->layer().setCornerRadius(16);
  root->addSubview(unlockView);

  imgBanner = std::make_shared<UIImageView>(CGRect{{0, 20}, {cardWidth, 174}});
  imgBanner->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  imgPublisherLogo = std::make_shared<UIImageView>(CGRect{{kSideMargin, 204}, {120, 40}});
  lblObTitle = Label({{kSideMargin, 252}, {inner, 48}}, 2);
  lblObPromt = Label({{kSideMargin, 300}, {inner, 40}}, 2);
  lblObCustomerPrice = Label({{kSideMargin, 344}, {inner, 24}}, 1);
  btnUnlock = std::make_shared<UIButton>(CGRect{{kSideMargin, 376}, {inner, 45}});
  btnUnlock->setBackgroundColor(kBrandBlue);
  btnUnlock->setTitleColor(UIColor::white(), UIControlState::normal);
  btnUnlock->layer().setCornerRadius(8);
  // Hosts' UI tests find the card's controls by these, whatever the service's texts.
  btnUnlock->setAccessibilityIdentifier("unlock");
  btnAgreement = std::make_shared<UIButton>(CGRect{{kSideMargin, 426}, {inner, 32}});
  btnAgreement->setTitleColor(UIColor::darkGray(), UIControlState::normal);
  btnAgreement->setAccessibilityIdentifier("consent");
  lblWarning = Label({{kSideMargin, 460}, {inner, 20}}, 1);
  lblWarning->setTextColor(kWarningRed);
  const double linkWidth = inner / 3;
  btnConsent = {
      LinkButton({{kSideMargin, 496}, {linkWidth, 28}}, "Terms", 0),
      LinkButton({{kSideMargin + linkWidth, 496}, {linkWidth, 28}}, "Privacy", 1),
      LinkButton({{kSideMargin + 2 * linkWidth, 496}, {linkWidth, 28}}, "Contact", 2),
  };
  for (const auto& view : std::initializer_list<std::shared_ptr<UIView>>{
           imgBanner, imgPublisherLogo, lblObTitle, lblObPromt, lblObCustomerPrice, btnUnlock, btnAgreement,
           lblWarning}) {
    unlockView->addSubview(view);
  }
  for (const auto& button : btnConsent) unlockView->addSubview(button);

  // The splash panel.
  splashView = std::make_shared<UIView>(
      CGRect{{kSideMargin, std::round((height - kSplashHeight) / 2)}, {cardWidth, kSplashHeight}});
  splashView->setAutoresizingMask(floating);
  splashView->setBackgroundColor(UIColor::white());
  splashView->layer().setCornerRadius(16);
  lblSplashMessage = Label({{kSideMargin, 40}, {inner, 80}}, 3);
  splashView->addSubview(lblSplashMessage);
  root->addSubview(splashView);

  // Constants and placement, as the card starts: banner shown, unlock button
  // shown, checkbox shown, card and splash centred.
  imgBannerTopMargin = Constraint("imgBannerTopMargin", 20, true);
  imgBannerHeightConstraint = Constraint("imgBannerHeightConstraint", 174, true);
  btnUnlockHeightConstraint = Constraint("btnUnlockHeightConstraint", 45, true);
  btnUnlockBottomMarginConstraint = Constraint("btnUnlockBottomMarginConstraint", 5, true);
  btnAgreementBottomConstraint = Constraint("btnAgreementBottomConstraint", 20, true);
  unlockViewHeightConstraint = Constraint("unlockViewHeightConstraint", kCardHeight, true);
  unlockViewTopConstraint = Constraint("unlockViewTopConstraint", 20, false);
  unlockViewVerticalConstraint = Constraint("unlockViewVerticalConstraint", 0, true);
  unlockViewBottomConstraint = Constraint("unlockViewBottomConstraint", 20, false);
  splashViewTopConstraint = Constraint("splashViewTopConstraint", 20, true);
  splashViewTopConstraint->setPriority(kSplashTopPriority);
  splashViewVerticalConstraint = Constraint("splashViewVerticalConstraint", 0, true);
  splashViewBottomConstraint = Constraint("splashViewBottomConstraint", 20, false);
  for (const auto& constraint : {imgBannerTopMargin, imgBannerHeightConstraint, btnUnlockHeightConstraint,
                                 btnUnlockBottomMarginConstraint, btnAgreementBottomConstraint,
                                 unlockViewHeightConstraint}) {
    unlockView->addConstraint(constraint);
  }
  for (const auto& constraint : {unlockViewTopConstraint, unlockViewVerticalConstraint, unlockViewBottomConstraint,
                                 splashViewTopConstraint, splashViewVerticalConstraint, splashViewBottomConstraint}) {
    root->addConstraint(constraint);
  }

  // Actions. Targets are held weakly: the views never keep the paywall alive.
  if (auto me = self()) {
    btnUnlock->addTarget(me, &PaywallVC::onUnlockButtonTapped, UIControlEvent::touchUpInside);
    btnAgreement->addTarget(me, &PaywallVC::onAgreementButtonTapped, UIControlEvent::touchUpInside);
    for (const auto& button : btnConsent) {
      button->addTarget(me, &PaywallVC::onConsentButtonsTapped, UIControlEvent::touchUpInside);
    }
  }

  setView(root);
}

}  // namespace obolo
