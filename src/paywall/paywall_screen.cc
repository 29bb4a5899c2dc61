// The paywall as a screen: its start-up, the screen actions the purchase logic
// asks for, the hand-over to the login screen and the reaction to a logout.

#include "entry/obolo_storyboard.h"
#include "login/web_login_vc.h"
#include "paywall/paywall_vc.h"
#include "platform/log.h"
#include "ui/view_helpers.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

namespace obolo {
namespace {

// How long the splash message shows before the article is readable.
constexpr int kRevealSeconds = 5;

}  // namespace

PaywallVC::PaywallVC()
    : visualEffectView(std::make_shared<UIVisualEffectView>(UIBlurEffect(UIBlurEffect::Style::light))),
      contentView(std::make_shared<UIView>()),
      global(GlobalVariable::shared()),
      placeholderHost_(std::make_shared<UIViewController>()) {
  viewController = placeholderHost_;
}

PaywallVC::~PaywallVC() = default;

std::shared_ptr<PaywallVC> PaywallVC::self() { return selfAs(this); }

void PaywallVC::viewDidLoad() {
  UIViewController::viewDidLoad();
  hide(*view());
  hide(*unlockView);
  hide(*splashView);
  hide(*visualEffectView);
  setupViewContents();
  configureView();
  effectView->setHidden(isCustom);
  // The centre holds the observer weakly: a paywall that goes away stops
  // observing by itself.
  NotificationCenter::defaultCenter().addObserver(self(), &PaywallVC::methodOfReceivedNotification,
                                                  kSessionEndedNotification);
  visualEffectView->setFrame(contentView->bounds());
  visualEffectView->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  contentView->addSubview(visualEffectView);
}

void PaywallVC::viewWillAppear(bool animated) { UIViewController::viewWillAppear(animated); }

void PaywallVC::onUnlockButtonTapped(const std::any& /*sender*/) {
  if (reporter.listening()) reporter.report({.kind = PaywallEventKind::unlockTapped, .consent = isChecked_});
  if (!isChecked_) return;  // the card already shows the consent warning
  if (!global.isOBTokenExist()) {
    openLoginScreen();
  } else if (global.isOBTokenValid()) {
    requestAcceptBid();
  } else {
    LogLine("Not valid");
  }
}

void PaywallVC::prepare(const UIStoryboardSegue& segue, const std::any& /*sender*/) {
  auto login = std::dynamic_pointer_cast<WebLoginVC>(segue.destination());
  if (!login) return;
  login->obBidId = obBidId;
  login->publisherId = global.publisherId();
  login->callback = [me = self()](std::string deviceKey, std::string loginKey) {
    me->isRedirectToPaywall = true;
    if (me->reporter.listening()) me->report(PaywallEventKind::loginCompleted);
    me->requestCustomerBid(deviceKey, loginKey);
  };
  login->doneCallback = [me = self()] {
    if (me->reporter.listening()) me->report(PaywallEventKind::loginClosed);
  };
}

void PaywallVC::methodOfReceivedNotification(const Notification& /*notification*/) {
  if (auto host = viewController.lock()) removeFloatingButton(*host);
  requestCreateLoggedOutBid();
}

void PaywallVC::hidePaywall() { hide(*view()); }

void PaywallVC::showPaywall() { show(*view()); }

void PaywallVC::showCard() {
  show(*unlockView);
  hide(*splashView);
  show(*visualEffectView);
  if (auto host = viewController.lock()) removeFloatingButton(*host);
}

void PaywallVC::reveal() {
  hide(*unlockView);
  show(splashView, kRevealSeconds);
  show(visualEffectView, kRevealSeconds);
  show(view(), kRevealSeconds);
  if (auto host = viewController.lock()) {
    // The wallet opened from the button reports to this paywall's observers.
    AttachReporter(*host, reporter);
    addFloatingButton(*host, kRevealSeconds);
  }
}

void PaywallVC::setSplashMessage(const std::optional<std::string>& text) { lblSplashMessage->setText(text); }

void PaywallVC::openLoginScreen() {
  performSegue(kPaywallToWebLoginSegue, std::any(self()));
  if (reporter.listening()) report(PaywallEventKind::loginOpened);
}

}  // namespace obolo
