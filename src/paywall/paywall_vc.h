// The paywall: the screen controller that runs one article's purchase.
//
// The host presentation (Obolo::loadPaywall) makes one from the storyboard,
// hands it the host screen (and optionally the content view, placement and
// custom flag) and lays its view over the article. From then on it works by
// itself:
//
//   start-up    everything hidden, the card prepared, the first call chosen
//               from the stored session: a logged-out bid, a logged-in bid, or
//               a token refresh followed by a logged-in bid;
//   decision    every bid record hides the paywall, reveals an article already
//               paid for, or shows the card (paywall/paywall_decision.h);
//   unlock      a reader without a session logs in through the web login
//               screen, whose keys complete a customer bid; a reader with a
//               valid token pays by accepting the bid;
//   reveal      the splash message and blur show for 5 seconds and hide, and
//               the floating wallet button is added to the host screen;
//   logout      "NotificationIdentifier" removes the button and starts a new
//               logged-out bid.
//
// The reader never sees an error: failures are written out and leave the
// screen as it was; while no bid has arrived the paywall stays hidden and the
// article readable.
//
// The class's code is split by concern: paywall_purchase.cc holds the purchase
// logic (which call, with what, what is stored, what each answer asks of the
// screen), paywall_card.cc the card's views, paywall_screen.cc the screen's
// life and the screen actions.
//
// Threads: views and screen state on the main loop. Bid, customer-bid and
// accept answers hop to the main loop before doing anything; the token
// refresh's answer does not: it only writes the session store and starts the
// next bid, from the HTTP session's thread. Pending calls and timers keep the
// controller alive until they have run.

#ifndef OBOLO_PAYWALL_PAYWALL_VC_H_
#define OBOLO_PAYWALL_PAYWALL_VC_H_

#include <any>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "entry/global_variable.h"
#include "entry/paywall_reporter.h"
#include "entry/position.h"
#include "network/network_manager.h"
#include "network/response_records.h"
#include "platform/notification_center.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_image_view.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_visual_effect_view.h"

namespace obolo {

class PaywallVC : public UIViewController {
 public:
  PaywallVC();
  ~PaywallVC() override;

  // --- The card's outlets, connected when the view loads -------------------
  std::shared_ptr<UIView> unlockView;   // the card panel
  std::shared_ptr<UIView> splashView;   // the panel shown while revealing
  std::vector<std::shared_ptr<UIButton>> btnConsent;  // links: tag 0 terms, 1 privacy, 2 contact
  std::shared_ptr<UIButton> btnAgreement;             // the consent checkbox
  std::shared_ptr<NSLayoutConstraint> btnAgreementBottomConstraint;
  std::shared_ptr<UIImageView> imgBanner;
  std::shared_ptr<NSLayoutConstraint> imgBannerHeightConstraint;
  std::shared_ptr<NSLayoutConstraint> imgBannerTopMargin;
  std::shared_ptr<UIImageView> imgPublisherLogo;
  std::shared_ptr<UILabel> lblObTitle;
  std::shared_ptr<UILabel> lblObPromt;
  std::shared_ptr<UILabel> lblObCustomerPrice;
  std::shared_ptr<UIButton> btnUnlock;
  std::shared_ptr<UILabel> lblSplashMessage;
  std::shared_ptr<NSLayoutConstraint> btnUnlockHeightConstraint;
  std::shared_ptr<NSLayoutConstraint> btnUnlockBottomMarginConstraint;
  std::shared_ptr<UIVisualEffectView> effectView;  // the paywall's own full-screen blur
  std::shared_ptr<NSLayoutConstraint> unlockViewHeightConstraint;
  std::shared_ptr<UILabel> lblWarning;
  std::shared_ptr<NSLayoutConstraint> unlockViewTopConstraint;
  std::shared_ptr<NSLayoutConstraint> unlockViewVerticalConstraint;
  std::shared_ptr<NSLayoutConstraint> unlockViewBottomConstraint;
  std::shared_ptr<NSLayoutConstraint> splashViewTopConstraint;
  std::shared_ptr<NSLayoutConstraint> splashViewBottomConstraint;
  std::shared_ptr<NSLayoutConstraint> splashViewVerticalConstraint;

  // The reader's consent; paying requires it. Every assignment updates the
  // checkbox's image and the warning, also when the value does not change.
  bool isChecked() const { return isChecked_; }
  void setIsChecked(bool checked);

  // --- Handed over by the host presentation before the view loads ----------
  // The host screen, which receives the floating wallet button. Held weakly:
  // the host owns the paywall as its child, and a strong reference back would
  // keep both alive after the host is gone.
  std::weak_ptr<UIViewController> viewController;
  // The blur laid over the host's content view.
  const std::shared_ptr<UIVisualEffectView> visualEffectView;
  // The host's view that carries the article, when it gave one; otherwise the
  // controller's own empty placeholder.
  std::shared_ptr<UIView> contentView;
  // True when the host gave its own content view (it is blurred by
  // visualEffectView instead of effectView).
  bool isCustom = false;
  // The host's observers of this paywall and its article; the global
  // observers only when no Obolo handed one over (paywall_events.cc).
  PaywallReporter reporter;

  // --- Purchase state ------------------------------------------------------
  std::int64_t obBidId = 0;       // the current bid
  std::string transactionMode;    // sent back when the bid is accepted
  GlobalVariable& global;
  bool isRedirectToPaywall = false;  // true once a login has come back here; never reset

  Position position = Position::center;

  // --- Screen life -----------------------------------------------------------
  void loadView() override;
  void viewDidLoad() override;
  void viewWillAppear(bool animated) override;
  // Hands the bid, the publisher and the login callback to the web login screen.
  void prepare(const UIStoryboardSegue& segue, const std::any& sender) override;
  // A logout elsewhere: removes the floating button and starts a new logged-out bid.
  void methodOfReceivedNotification(const Notification& notification);

  // --- The card ----------------------------------------------------------------
  void setupViewContents();
  void onAgreementButtonTapped(const std::shared_ptr<UIButton>& sender);
  void onConsentButtonsTapped(const std::shared_ptr<UIButton>& sender);
  void onUnlockButtonTapped(const std::any& sender);
  // Fills the card on a later turn of the main loop.
  void updateView(const PaywallSettingsSet& settings);
  void isUnlockButton(bool hidden);
  void updatePaywallPosition();

  // --- Purchase logic ------------------------------------------------------------
  void configureView();
  void requestCreateLoggedOutBid();
  void requestCreateLoggedInBid();
  void getNextAccesToken();
  void saveCustomerData(const CustomerInfoSet& data, bool isExpired = false);
  void decidePaywall(const DataSet& data);
  void configurePaywall(const DataSet& with);
  void requestCustomerBid(const std::string& deviceKey, const std::string& loginToken);
  void requestAcceptBid();

 private:
  // The screen actions through which the purchase logic takes effect.
  void hidePaywall();
  void showPaywall();
  void showCard();
  void reveal();
  void setSplashMessage(const std::optional<std::string>& text);
  void openLoginScreen();

  // What the host's observers hear (paywall_events.cc). Each is called only
  // when reporter.listening().
  void reportCardShown(const DataSet& data) const;
  void report(PaywallEventKind kind) const;
  void reportRevealed(bool paidNow) const;
  void reportFailure(ServiceCall call, const std::string& failureText) const;
  // A service call's failure handler: writes the text out and, when anyone
  // may be listening as the call goes out, reports it.
  OnFailure onFailure(ServiceCall call) const;

  std::shared_ptr<PaywallVC> self();
  CreateLoggedBidParam bidParam(bool loggedIn) const;
  Completion<OboloData> decideOnMainLoop();

  bool isChecked_ = false;
  // The placeholder host until the host presentation hands over its own.
  std::shared_ptr<UIViewController> placeholderHost_;
};

}  // namespace obolo

#endif  // OBOLO_PAYWALL_PAYWALL_VC_H_
