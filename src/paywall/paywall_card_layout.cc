// The paywall's views, built in code as the kit's storyboard scene: the
// full-screen root with its own blur, the card, and the splash panel, every
// outlet connected and every action wired, placed by constraints.
//
// The card is a column, top to bottom:
//
//   banner            imgBannerTopMargin below the card's top, imgBannerHeightConstraint high
//   publisher logo    160 x 40, centred
//   title             bold, centred, up to 3 lines
//   prompt            centred, up to 5 lines
//   price             large, in the kit's blue
//   unlock button     btnUnlockHeightConstraint high
//   warning           btnUnlockBottomMarginConstraint below the button; empty, it takes no room
//   consent checkbox  the box and the agreement text, wrapping
//   links             btnAgreementBottomConstraint below the checkbox: Terms, Privacy, Contact
//
// and its height follows that content. Across, the card keeps 16 points from
// the root's edges, up to 440 points wide (wider screens centre it). Down, the
// placement constraints put it at the top, centre or bottom, 16 points from
// the edges, and unlockViewHeightConstraint keeps it within the root: when the
// content is taller, the banner yields first (its height constraint is the
// least important in the column), then the prompt (which then shows fewer
// lines), then the rest; the card clips what no longer fits.
//
// The splash panel is placed the same way, its height following the message.
// Its top constraint is less important than its vertical one, so with both
// active (the centred placement) it is centred.

#include "paywall/paywall_vc.h"
#include "toolkit/ui_screen.h"

namespace obolo {
namespace {

constexpr CGFloat kScreenMargin = 16;
constexpr CGFloat kCardMaxWidth = 440;
constexpr CGFloat kCardPadding = 24;
constexpr CGFloat kBannerInset = 20;
constexpr CGFloat kCardCornerRadius = 20;
constexpr CGSize kLogoSize{160, 40};
constexpr CGFloat kCheckboxSize = 22;

// Between the banner's top margin and height (the host may set both) and the
// texts' compression resistance: under a short screen the banner gives way.
constexpr UILayoutPriority kBannerHeightPriority = 700;
// The splash panel's top constraint yields to its vertical one when both are
// active (the centred placement), and to the message's size.
constexpr UILayoutPriority kSplashTopPriority = 200;
// Labels keep to their text's size before anything stretches them.
constexpr UILayoutPriority kLabelHuggingPriority = 251;
// The prompt is the text that gives way when even without the banner the
// column is taller than the screen.
constexpr UILayoutPriority kPromptCompressionPriority = 740;
// The side margins yield to the maximum width on wide screens.
constexpr UILayoutPriority kSideMarginPriority = 750;

constexpr UIColor kBrandBlue{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1};
constexpr UIColor kInk{0.11, 0.11, 0.12, 1};
constexpr UIColor kSecondaryInk{0.36, 0.36, 0.40, 1};
constexpr UIColor kLinkGrey{0.45, 0.45, 0.48, 1};
constexpr UIColor kWarningRed{0.80, 0.13, 0.13, 1};
constexpr UIColor kBannerPlaceholder{0.93, 0.94, 0.96, 1};

using Constraints = std::vector<std::shared_ptr<NSLayoutConstraint>>;

std::shared_ptr<NSLayoutConstraint> Named(std::shared_ptr<NSLayoutConstraint> constraint, const char* identifier,
                                          UILayoutPriority priority = UILayoutPriorityRequired) {
  constraint->setIdentifier(identifier);
  constraint->setPriority(priority);
  return constraint;
}

template <class View>
std::shared_ptr<View> Constrained(std::shared_ptr<View> view) {
  view->setTranslatesAutoresizingMaskIntoConstraints(false);
  return view;
}

std::shared_ptr<UILabel> Label(UIFont font, UIColor color, int lines) {
  auto label = Constrained(std::make_shared<UILabel>());
  label->setFont(font);
  label->setTextColor(color);
  label->setNumberOfLines(lines);
  label->setTextAlignment(NSTextAlignment::center);
  label->setContentHuggingPriority(kLabelHuggingPriority, UILayoutConstraintAxis::vertical);
  return label;
}

std::shared_ptr<UIButton> LinkButton(const char* title, int tag) {
  auto button = Constrained(std::make_shared<UIButton>());
  button->setTitle(title, UIControlState::normal);
  button->setTitleColor(kLinkGrey, UIControlState::normal);
  button->titleLabel()->setFont(UIFont::systemFont(13));
  button->setContentEdgeInsets({6, 2, 6, 2});
  button->setTag(tag);
  return button;
}

std::shared_ptr<UIView> Panel() {
  auto panel = Constrained(std::make_shared<UIView>());
  panel->setBackgroundColor(UIColor::white());
  panel->layer().setCornerRadius(kCardCornerRadius);
  return panel;
}

// Across: 16 points from the root's edges, at most 440 wide, centred.
void PlaceAcross(const std::shared_ptr<UIView>& panel, const std::shared_ptr<UIView>& root, Constraints& out) {
  out.push_back(Named(panel->leadingAnchor().equalTo(root->leadingAnchor(), kScreenMargin), "leading",
                      kSideMarginPriority));
  out.push_back(Named(root->trailingAnchor().equalTo(panel->trailingAnchor(), kScreenMargin), "trailing",
                      kSideMarginPriority));
  out.push_back(panel->leadingAnchor().greaterThanOrEqualTo(root->leadingAnchor(), kScreenMargin));
  out.push_back(panel->widthAnchor().lessThanOrEqualToConstant(kCardMaxWidth));
  out.push_back(panel->centerXAnchor().equalTo(root->centerXAnchor()));
}

// A view of the column, across the card within its padding.
void Across(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& card, CGFloat inset,
            Constraints& out) {
  out.push_back(view->leadingAnchor().equalTo(card->leadingAnchor(), inset));
  out.push_back(card->trailingAnchor().equalTo(view->trailingAnchor(), inset));
}

}  // namespace

void PaywallVC::loadView() {
  const CGRect screen = UIScreen::main().bounds();
  const auto flexibleSize = UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight;

  auto root = std::make_shared<UIView>(CGRect{{0, 0}, screen.size});
  root->setAutoresizingMask(flexibleSize);
  root->setBackgroundColor(UIColor::clear());

  effectView = std::make_shared<UIVisualEffectView>(UIBlurEffect(UIBlurEffect::Style::light));
  effectView->setFrame(root->bounds());
  effectView->setAutoresizingMask(flexibleSize);
  root->addSubview(effectView);

  // --- The card ---
  unlockView = Panel();
  unlockView->setClipsToBounds(true);
  imgBanner = Constrained(std::make_shared<UIImageView>());
  imgBanner->setContentMode(UIViewContentMode::scaleAspectFill);
  imgBanner->setClipsToBounds(true);
  imgBanner->setBackgroundColor(kBannerPlaceholder);
  imgBanner->layer().setCornerRadius(12);
  // Its height is the height constraint's, whatever the picture's own size.
  imgBanner->setContentCompressionResistancePriority(1, UILayoutConstraintAxis::vertical);
  imgBanner->setContentHuggingPriority(1, UILayoutConstraintAxis::vertical);
  // The frame the logo's loading indicator is sized by before the first layout.
  imgPublisherLogo = Constrained(std::make_shared<UIImageView>(CGRect{{0, 0}, kLogoSize}));
  imgPublisherLogo->setContentMode(UIViewContentMode::scaleAspectFit);
  lblObTitle = Label(UIFont::boldSystemFont(20), kInk, 3);
  lblObPromt = Label(UIFont::systemFont(15), kSecondaryInk, 5);
  lblObPromt->setContentCompressionResistancePriority(kPromptCompressionPriority, UILayoutConstraintAxis::vertical);
  lblObCustomerPrice = Label(UIFont::boldSystemFont(26), kBrandBlue, 1);
  btnUnlock = Constrained(std::make_shared<UIButton>());
  btnUnlock->setBackgroundColor(kBrandBlue);
  btnUnlock->setTitleColor(UIColor::white(), UIControlState::normal);
  btnUnlock->titleLabel()->setFont(UIFont::boldSystemFont(17));
  btnUnlock->layer().setCornerRadius(12);
  // Hosts' UI tests find the card's controls by these, whatever the service's texts.
  btnUnlock->setAccessibilityIdentifier("unlock");
  lblWarning = Label(UIFont::systemFont(13), kWarningRed, 2);
  lblWarning->setTextAlignment(NSTextAlignment::left);
  btnAgreement = Constrained(std::make_shared<UIButton>());
  btnAgreement->setTitleColor(kSecondaryInk, UIControlState::normal);
  btnAgreement->setAccessibilityIdentifier("consent");
  btnAgreement->titleLabel()->setFont(UIFont::systemFont(13));
  btnAgreement->titleLabel()->setNumberOfLines(0);
  btnAgreement->setImageSize(CGSize{kCheckboxSize, kCheckboxSize});
  btnAgreement->setContentHorizontalAlignment(UIControlContentHorizontalAlignment::left);
  btnAgreement->setContentEdgeInsets({6, 0, 6, 0});
  btnConsent = {LinkButton("Terms", 0), LinkButton("Privacy", 1), LinkButton("Contact", 2)};

  root->addSubview(unlockView);
  for (const auto& view : std::initializer_list<std::shared_ptr<UIView>>{
           imgBanner, imgPublisherLogo, lblObTitle, lblObPromt, lblObCustomerPrice, btnUnlock, lblWarning,
           btnAgreement}) {
    unlockView->addSubview(view);
  }
  for (const auto& button : btnConsent) unlockView->addSubview(button);

  // --- The splash panel ---
  splashView = Panel();
  auto badge = Constrained(std::make_shared<UIView>());
  badge->setBackgroundColor(kBrandBlue);
  badge->layer().setCornerRadius(28);
  auto tick = Label(UIFont::boldSystemFont(30), UIColor::white(), 1);
  tick->setText("\u2713");
  lblSplashMessage = Label(UIFont::systemFont(17), kInk, 0);
  splashView->addSubview(badge);
  badge->addSubview(tick);
  splashView->addSubview(lblSplashMessage);
  root->addSubview(splashView);

  // --- The outlets' constraints, as the card starts: banner shown, unlock
  // button shown, checkbox shown, card and splash centred ---
  const auto& card = unlockView;
  imgBannerTopMargin = Named(imgBanner->topAnchor().equalTo(card->topAnchor(), 20), "imgBannerTopMargin");
  imgBannerHeightConstraint =
      Named(imgBanner->heightAnchor().equalToConstant(174), "imgBannerHeightConstraint", kBannerHeightPriority);
  btnUnlockHeightConstraint = Named(btnUnlock->heightAnchor().equalToConstant(45), "btnUnlockHeightConstraint");
  btnUnlockBottomMarginConstraint =
      Named(lblWarning->topAnchor().equalTo(btnUnlock->bottomAnchor(), 5), "btnUnlockBottomMarginConstraint");
  btnAgreementBottomConstraint = Named(btnConsent[1]->topAnchor().equalTo(btnAgreement->bottomAnchor(), 20),
                                       "btnAgreementBottomConstraint");
  unlockViewHeightConstraint =
      Named(NSLayoutConstraint::make(card, NSLayoutAttribute::height, NSLayoutRelation::lessThanOrEqual, root,
                                     NSLayoutAttribute::height, 1, -2 * kScreenMargin),
            "unlockViewHeightConstraint");
  unlockViewTopConstraint =
      Named(card->topAnchor().equalTo(root->topAnchor(), kScreenMargin), "unlockViewTopConstraint");
  unlockViewVerticalConstraint =
      Named(card->centerYAnchor().equalTo(root->centerYAnchor()), "unlockViewVerticalConstraint");
  unlockViewBottomConstraint =
      Named(root->bottomAnchor().equalTo(card->bottomAnchor(), kScreenMargin), "unlockViewBottomConstraint");
  splashViewTopConstraint = Named(splashView->topAnchor().equalTo(root->topAnchor(), kScreenMargin),
                                  "splashViewTopConstraint", kSplashTopPriority);
  splashViewVerticalConstraint =
      Named(splashView->centerYAnchor().equalTo(root->centerYAnchor()), "splashViewVerticalConstraint");
  splashViewBottomConstraint =
      Named(root->bottomAnchor().equalTo(splashView->bottomAnchor(), kScreenMargin), "splashViewBottomConstraint");

  Constraints layout{imgBannerTopMargin, imgBannerHeightConstraint, btnUnlockHeightConstraint,
                     btnUnlockBottomMarginConstraint, btnAgreementBottomConstraint, unlockViewHeightConstraint,
                     unlockViewVerticalConstraint, splashViewTopConstraint, splashViewVerticalConstraint};
  PlaceAcross(card, root, layout);
  PlaceAcross(splashView, root, layout);

  // The card's column.
  Across(imgBanner, card, kBannerInset, layout);
  layout.push_back(imgPublisherLogo->topAnchor().equalTo(imgBanner->bottomAnchor(), 16));
  layout.push_back(imgPublisherLogo->widthAnchor().equalToConstant(kLogoSize.width));
  layout.push_back(imgPublisherLogo->heightAnchor().equalToConstant(kLogoSize.height));
  layout.push_back(imgPublisherLogo->centerXAnchor().equalTo(card->centerXAnchor()));
  layout.push_back(lblObTitle->topAnchor().equalTo(imgPublisherLogo->bottomAnchor(), 12));
  layout.push_back(lblObPromt->topAnchor().equalTo(lblObTitle->bottomAnchor(), 8));
  layout.push_back(lblObCustomerPrice->topAnchor().equalTo(lblObPromt->bottomAnchor(), 12));
  layout.push_back(btnUnlock->topAnchor().equalTo(lblObCustomerPrice->bottomAnchor(), 16));
  layout.push_back(btnAgreement->topAnchor().equalTo(lblWarning->bottomAnchor(), 4));
  for (const auto& view : std::initializer_list<std::shared_ptr<UIView>>{
           lblObTitle, lblObPromt, lblObCustomerPrice, btnUnlock, lblWarning, btnAgreement}) {
    Across(view, card, kCardPadding, layout);
  }
  // The links: Privacy in the middle, the others beside it.
  layout.push_back(btnConsent[1]->centerXAnchor().equalTo(card->centerXAnchor()));
  layout.push_back(btnConsent[1]->leadingAnchor().equalTo(btnConsent[0]->trailingAnchor(), 16));
  layout.push_back(btnConsent[2]->leadingAnchor().equalTo(btnConsent[1]->trailingAnchor(), 16));
  layout.push_back(btnConsent[0]->centerYAnchor().equalTo(btnConsent[1]->centerYAnchor()));
  layout.push_back(btnConsent[2]->centerYAnchor().equalTo(btnConsent[1]->centerYAnchor()));
  layout.push_back(card->bottomAnchor().equalTo(btnConsent[1]->bottomAnchor(), 16));

  // The splash panel's column.
  layout.push_back(badge->topAnchor().equalTo(splashView->topAnchor(), 28));
  layout.push_back(badge->widthAnchor().equalToConstant(56));
  layout.push_back(badge->heightAnchor().equalToConstant(56));
  layout.push_back(badge->centerXAnchor().equalTo(splashView->centerXAnchor()));
  layout.push_back(tick->centerXAnchor().equalTo(badge->centerXAnchor()));
  layout.push_back(tick->centerYAnchor().equalTo(badge->centerYAnchor()));
  layout.push_back(lblSplashMessage->topAnchor().equalTo(badge->bottomAnchor(), 16));
  Across(lblSplashMessage, splashView, kCardPadding, layout);
  layout.push_back(splashView->bottomAnchor().equalTo(lblSplashMessage->bottomAnchor(), 28));
  NSLayoutConstraint::activate(layout);

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
