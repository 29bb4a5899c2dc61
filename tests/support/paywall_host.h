// A headless host app screen for paywall tests: a window with a host screen
// whose content view shows an article, the kit configured for the sandbox's
// seeded publisher, and the main loop in virtual time.

#ifndef OBOLO_TESTS_SUPPORT_PAYWALL_HOST_H_
#define OBOLO_TESTS_SUPPORT_PAYWALL_HOST_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "entry/position.h"
#include "paywall/paywall_vc.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_window.h"

namespace obolo::testing {

class PaywallHost {
 public:
  // Puts the main loop in virtual time and shows the host screen in a key
  // window. REQUIRES: the sandbox environment (the kit is configured for its
  // seeded publisher) and a temporary store.
  explicit PaywallHost(std::string articleUrl);
  ~PaywallHost();

  // Constructs Obolo for the article and loads the paywall over the content
  // view at `position`; returns the new paywall.
  std::shared_ptr<PaywallVC> load(Position position = Position::center);
  // The same over the whole host screen.
  std::shared_ptr<PaywallVC> loadFullScreen();

  // Runs the main loop until `done` holds (real time, for network answers).
  bool waitFor(const std::function<bool()>& done, std::chrono::seconds timeout = std::chrono::seconds(15));
  // Moves virtual time on, firing the timers due meanwhile.
  void advance(std::chrono::duration<double> duration);

  // What a reader sees.
  static bool isHidden(const PaywallVC& paywall);  // the paywall's root view
  static bool isCardShown(const PaywallVC& paywall);
  bool hasFloatingButtonOnScreen() const;

  const std::shared_ptr<UIWindow> window;
  const std::shared_ptr<UIViewController> host;
  const std::shared_ptr<UIView> content;  // the article's view
  const std::string articleUrl;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_PAYWALL_HOST_H_
