// The paywall card: consent, links, and filling the card from the service's
// settings. What goes where is worked out in card_content.h; this file puts
// it on the views.

#include "entry/kit_bundle.h"
#include "paywall/card_content.h"
#include "paywall/paywall_vc.h"
#include "platform/main_loop.h"
#include "toolkit/ui_image.h"
#include "ui/button_helpers.h"
#include "ui/image_view_helpers.h"
#include "ui/label_helpers.h"

namespace obolo {
namespace {

constexpr char kConsentWarning[] = "Please agree to terms & policies.";

}  // namespace

void PaywallVC::setupViewContents() {
  for (const auto& button : btnConsent) underline(*button);
  setIsChecked(true);
  imageFromURL(imgPublisherLogo, global.logoUrl());
}

void PaywallVC::setIsChecked(bool checked) {
  isChecked_ = checked;
  btnAgreement->setImage(UIImage::named(checked ? "checkbox" : "blankbox", obBundle()), UIControlState::normal);
  lblWarning->setText(checked ? "" : kConsentWarning);
}

void PaywallVC::onAgreementButtonTapped(const std::shared_ptr<UIButton>& /*sender*/) { setIsChecked(!isChecked_); }

void PaywallVC::onConsentButtonsTapped(const std::shared_ptr<UIButton>& sender) {
  if (sender) openUrl(*sender);
}

void PaywallVC::updateView(const PaywallSettingsSet& settings) {
  // Deferred, so that within one decision the unlock button's visibility (set
  // at once) is applied before the card's texts.
  MainLoop::main().post([me = self(), content = CardContentFor(settings)] {
    if (content.banner) {
      me->imgBanner->setImage(content.banner->imageName ? UIImage::named(*content.banner->imageName, obBundle())
                                                        : nullptr);
      me->imgBannerTopMargin->setConstant(content.banner->topMargin);
      me->imgBannerHeightConstraint->setConstant(content.banner->height);
    }
    me->lblObTitle->setText(content.title);
    me->lblObCustomerPrice->setText(content.price);
    replace(*me->lblObPromt, content.prompt);
    me->btnUnlock->setTitle(content.unlockButtonTitle, UIControlState::normal);
    me->btnAgreement->setHidden(content.agreementHidden);
    if (!content.agreementHidden) me->btnAgreement->setTitle(content.agreementTitle, UIControlState::normal);
    me->btnAgreementBottomConstraint->setConstant(content.agreementBottom);
    me->lblSplashMessage->setText(content.splashMessage);
    me->updatePaywallPosition();
  });
}

void PaywallVC::isUnlockButton(bool hidden) {
  const UnlockButtonLayout layout = UnlockButtonLayoutFor(hidden);
  btnUnlock->setHidden(layout.hidden);
  btnUnlockHeightConstraint->setConstant(layout.height);
  btnUnlockBottomMarginConstraint->setConstant(layout.bottomMargin);
}

void PaywallVC::updatePaywallPosition() {
  const Placement placement = PlacementFor(position);
  unlockViewTopConstraint->setActive(placement.cardTop);
  unlockViewBottomConstraint->setActive(placement.cardBottom);
  unlockViewVerticalConstraint->setActive(placement.cardVertical);
  splashViewTopConstraint->setActive(placement.splashTop);
  splashViewBottomConstraint->setActive(placement.splashBottom);
  splashViewVerticalConstraint->setActive(placement.splashVertical);
}

}  // namespace obolo
