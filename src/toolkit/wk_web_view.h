// A web view: loads pages and carries their script bridge.
//
// There is no browser engine. load() records the request (tests read
// lastRequest()); a test plays the page with postMessageFromPage(), which
// delivers a message to the named handler of the configuration's content
// controller on a later turn of the main loop, as the platform delivers script
// messages. The navigation and UI delegates are held weakly. Main thread only.

#ifndef OBOLO_TOOLKIT_WK_WEB_VIEW_H_
#define OBOLO_TOOLKIT_WK_WEB_VIEW_H_

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/ui_view.h"
#include "toolkit/url_request.h"
#include "toolkit/wk_frame_info.h"
#include "toolkit/wk_user_content_controller.h"

namespace obolo {

// What pages may do: run their scripts (the login page needs them).
struct WKWebpagePreferences {
  bool allowsContentJavaScript = true;  // pages run their scripts
};

// Copied into a web view when it is made; the content controller is shared.
struct WKWebViewConfiguration {
  // The preferences pages start with, and the controller that carries the
  // script message handlers.
  WKWebpagePreferences defaultWebpagePreferences;
  std::shared_ptr<WKUserContentController> userContentController =
      std::make_shared<WKUserContentController>();
};

// Navigation and UI callbacks. The kit implements none of them, so the web
// view's defaults apply; the interfaces exist so a screen can be a delegate.
class WKNavigationDelegate {
 public:
  virtual ~WKNavigationDelegate() = default;
};
// See WKNavigationDelegate.
class WKUIDelegate {
 public:
  virtual ~WKUIDelegate() = default;
};

class WKWebView : public UIView {
 public:
  // A web view with a copy of `configuration`.
  WKWebView(CGRect frame, WKWebViewConfiguration configuration);

  const WKWebViewConfiguration& configuration() const { return configuration_; }  // as copied

  // Starts loading `request`: recorded, and the web view's URL becomes its URL.
  void load(const URLRequest& request);
  // Every request loaded, oldest first; the last; and its address.
  const std::vector<URLRequest>& loadedRequests() const { return requests_; }
  std::optional<URLRequest> lastRequest() const;
  std::optional<URL> url() const;

  // The delegates, held weakly: null once gone.
  std::shared_ptr<WKNavigationDelegate> navigationDelegate() const { return navigation_delegate_.lock(); }
  void setNavigationDelegate(std::weak_ptr<WKNavigationDelegate> delegate) {
    navigation_delegate_ = std::move(delegate);
  }
  std::shared_ptr<WKUIDelegate> uiDelegate() const { return ui_delegate_.lock(); }
  void setUIDelegate(std::weak_ptr<WKUIDelegate> delegate) { ui_delegate_ = std::move(delegate); }

  // Test hook: the page calls window.webkit.messageHandlers.<name>.postMessage(body).
  // Returns false, posting nothing, when no handler has that name (the page's
  // script would fail). The handler registered under `name` when the message
  // is delivered receives it; a web view that is gone by then delivers nothing.
  // `frame` is the frame that posts; by default the main frame of the page
  // loaded last (an opaque origin while none was loaded), so load() also
  // plays a navigation to another page.
  bool postMessageFromPage(const std::string& name, nlohmann::json body,
                           std::optional<WKFrameInfo> frame = std::nullopt);
  // The main frame as the page loaded last would report it.
  WKFrameInfo mainFrame() const;

 private:
  WKWebViewConfiguration configuration_;
  std::vector<URLRequest> requests_;
  std::weak_ptr<WKNavigationDelegate> navigation_delegate_;
  std::weak_ptr<WKUIDelegate> ui_delegate_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_WK_WEB_VIEW_H_
