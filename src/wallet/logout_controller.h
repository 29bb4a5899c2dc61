// The wallet screen: the reader's balance, the service's links and logout.
//
// Opened full screen by the floating wallet button. On load it asks the
// service for the balance and shows "<currency> <balance>". Logout tells the
// service; on any answer that decodes it dismisses itself and, once the
// dismissal has completed, posts "NotificationIdentifier" on the default
// notification centre and then clears the stored session, in that order, so an
// observer still finds the old session. A failed call leaves the screen open
// and the session kept; failures are only written out.
//
// Main thread only; network completions hop to the main loop before touching
// the screen or the session.

#ifndef OBOLO_WALLET_LOGOUT_CONTROLLER_H_
#define OBOLO_WALLET_LOGOUT_CONTROLLER_H_

#include <any>
#include <memory>
#include <string>
#include <vector>

#include "entry/global_variable.h"
#include "entry/paywall_reporter.h"
#include "network/response_records.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {

// The notification every paywall observes to learn that the session ended.
inline constexpr char kSessionEndedNotification[] = "NotificationIdentifier";

class LogoutController : public UIViewController {
 public:
  LogoutController();

  // The text the balance label shows until an answer with a balance arrives,
  // and keeps when none does.
  static constexpr char kBalancePlaceholder[] = "\u2014";

  // Outlets, connected when the view loads.
  std::shared_ptr<UILabel> lblBalance;
  // The screen's other buttons, for the reader (and tests) to tap.
  std::shared_ptr<UIButton> btnCancel;
  std::shared_ptr<UIButton> btnLogout;
  std::vector<std::shared_ptr<UIButton>> btnConsent;  // tags 0 terms, 1 privacy, 2 contact

  // The shared record, fixed at construction.
  GlobalVariable& global;
  // The host's observers: the logout and failed calls are reported to them.
  // Set by the floating button before the view loads; the global observers
  // otherwise.
  PaywallReporter reporter;

  // Builds the screen in code: the balance label, Cancel and Logout, and the
  // three link buttons, each wired to its action.
  void loadView() override;
  // Starts the balance request.
  void viewDidLoad() override;

  // Dismisses the screen, animated; nothing else.
  void onCancelButtonTapped(const std::any& sender);
  // Starts the logout.
  void onLogoutButtonTapped(const std::any& sender);
  // Opens the link of the tapped button's tag (0 terms, 2 contact, other
  // privacy). A null sender does nothing.
  void onConsentButtonsTaped(const std::shared_ptr<UIButton>& sender);

  // Asks for the balance of the stored customer with the current publisher;
  // an answer with `data` sets the label to BalanceText(data) on the main loop.
  void requestBalanceAndArticle();
  // Tells the service the stored device logs out; see the header comment.
  void requestLogout();
};

// The balance as the wallet shows it: the currency ("" when absent), one
// space, then the balance (0 when absent) in its shortest decimal form with
// whole numbers keeping ".0": "EUR 10.0", "EUR 12.5", " 12.5", "EUR 0.0".
std::string BalanceText(const BADataSet& data);

}  // namespace obolo

#endif  // OBOLO_WALLET_LOGOUT_CONTROLLER_H_
