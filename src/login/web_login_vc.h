// The web login screen: the service's login page in a web view.
//
// A reader who is not logged in to the wallet logs in on the service's page.
// The screen builds the page's address from the publisher and the current bid,
// loads it, and listens under the script handler "obHandler" for the page's
// message carrying the device key and the login key. When a message carries
// both as texts, the screen dismisses itself and, once the dismissal has
// completed, hands the two keys to `callback`. Done dismisses it without a
// call.
//
// The opener sets obBidId, publisherId and callback before the view loads; the
// screen never changes them. Main thread only.
//
// Ownership: the web view's content controller holds its handlers strongly, and
// the screen registers itself, so the screen, its view, the web view and the
// content controller keep each other alive until the screen takes its handler
// back. It does so once it has been dismissed (after a valid message, after
// Done, or when its presenter takes it down); a dismissed screen no longer
// hears the page. The screen is meant to be presented once: one whose view was
// loaded but that was never presented keeps itself alive.

#ifndef OBOLO_LOGIN_WEB_LOGIN_VC_H_
#define OBOLO_LOGIN_WEB_LOGIN_VC_H_

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "toolkit/ui_view_controller.h"
#include "toolkit/wk_user_content_controller.h"
#include "toolkit/wk_web_view.h"

namespace obolo {

// The name the login page posts to: window.webkit.messageHandlers.obHandler.
inline constexpr char kLoginScriptHandlerName[] = "obHandler";
// The tag of the Done button in the screen's top bar.
inline constexpr int kWebLoginDoneButtonTag = 4101;

class WebLoginVC : public UIViewController,
                   public WKScriptMessageHandler,
                   public WKNavigationDelegate,
                   public WKUIDelegate {
 public:
  // Called with (device key, login key) after a successful login.
  using Callback = std::function<void(std::string deviceKey, std::string loginKey)>;

  WebLoginVC();

  // Replaced by loadView() with the configured web view.
  std::shared_ptr<WKWebView> webview;
  Callback callback;
  // Called once Done has dismissed the screen: the opener learns that the
  // reader left without logging in.
  std::function<void()> doneCallback;
  std::int64_t obBidId = 0;
  std::int64_t publisherId = 0;

  // Builds the web view: JavaScript on, this screen as the "obHandler" script
  // message handler, frame (0, status bar height + 44, view width, view
  // height). The frame keeps the full height, so the page's lowest
  // (status bar + 44) points lie below the screen's edge.
  // Also lays out the top bar above the web view: the status bar's height plus
  // 44 points, with the Done button at its right end.
  void loadView() override;
  // Loads the login page.
  void viewDidLoad() override;
  // Once the screen is dismissed, takes its script handler back (see the
  // ownership note above).
  void viewDidDisappear(bool animated) override;

  // The status bar height of the first key window's scene; 0 without one.
  double statausbarHeight() const;

  // The Done button: dismisses the screen, animated; `callback` is not
  // called, `doneCallback` is once the dismissal has completed.
  void onDoneButtonTapped(const std::any& sender);

  // The page's message. It must come from the main frame of a page whose
  // origin is the wallet site's or the service's web origin (the login page's
  // redirect), and its body must be a dictionary holding "device_key" and
  // "login_key" as texts. Anything else (another origin, a subframe, other
  // kinds of value, a body that is not a dictionary) is written out and
  // ignored, leaving the screen open; a message from elsewhere also gets a
  // line naming its frame. The body is written as one credential line. Never
  // throws.
  void userContentController(WKUserContentController& controller, const WKScriptMessage& message) override;

  // The login page's address: the wallet site's origin, then the five query
  // parameters login_source, login_publisher_id, login_publisher_logo_url,
  // login_publisher_bid_id and login_redirect_url, in that order, unencoded.
  std::string loginAddress() const;

 private:
  // Writes the address as one line and loads it. An address that is not a URL
  // (only possible with a malformed override) is reported and not loaded.
  void loadRequest();
  void addTopBar(double statusBarHeight);
};

// The wallet site's origin, "https://wallet.obolo.io"; OBOLO_WALLET_ORIGIN,
// read once at first use, points the login page elsewhere (the sandbox).
const std::string& LOGIN_WALLET_ORIGIN();
// The service's web origin the login page redirects to, "https://app.obolo.io";
// OBOLO_REDIRECT_ORIGIN overrides it.
const std::string& LOGIN_REDIRECT_ORIGIN();
// The publisher logo the login page shows, the same for every publisher;
// OBOLO_LOGIN_LOGO_URL overrides it.
const std::string& LOGIN_LOGO_URL();

}  // namespace obolo

#endif  // OBOLO_LOGIN_WEB_LOGIN_VC_H_
