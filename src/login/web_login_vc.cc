#include "login/web_login_vc.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>
#include <vector>

#include "platform/environment.h"
#include "platform/log.h"
#include "toolkit/ui_application.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_window.h"
#include "toolkit/url.h"
#include "toolkit/url_request.h"

namespace obolo {
namespace {

// Height of the bar that carries Done, below the status bar; the web view
// starts under it.
constexpr double kTopBarHeight = 44.0;
constexpr double kDoneButtonWidth = 72.0;
constexpr double kDoneButtonMargin = 8.0;

using nlohmann::json;

// A value as compact JSON; texts that are not UTF-8 get replacement characters
// instead of failing.
void AppendScalar(const json& value, std::string& out) {
  out += value.dump(-1, ' ', false, json::error_handler_t::replace);
}

// The body as one line of compact JSON, the same text json::dump() writes, but
// without recursion: a page can post nesting deep enough to overflow the stack
// of a recursive writer.
std::string OneLine(const json& body) {
  struct Open {
    const json* container;
    json::const_iterator next;
  };
  std::string out;
  std::vector<Open> open;
  auto begin = [&](const json& value) {
    if (value.is_object() || value.is_array()) {
      out += value.is_object() ? '{' : '[';
      open.push_back({&value, value.cbegin()});
    } else {
      AppendScalar(value, out);
    }
  };
  begin(body);
  while (!open.empty()) {
    Open& top = open.back();
    if (top.next == top.container->cend()) {
      out += top.container->is_object() ? '}' : ']';
      open.pop_back();
      continue;
    }
    if (top.next != top.container->cbegin()) out += ',';
    const auto element = top.next++;
    if (top.container->is_object()) {
      AppendScalar(json(element.key()), out);
      out += ':';
    }
    begin(*element);  // may grow `open`: `top` is not used after this
  }
  return out;
}

// The text under `key` when the body has one there, else nothing.
std::optional<std::string> TextAt(const json& body, const char* key) {
  auto found = body.find(key);
  if (found == body.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

// True for the main frame of a page from the wallet site or from the service's
// web origin (where the login page sends the reader back). Any other frame or
// page, one the reader navigated to or one embedded in the login page, could
// hand over keys of its own choosing.
bool FromLoginPage(const WKFrameInfo& frame) {
  if (!frame.isMainFrame) return false;
  for (const std::string* trusted : {&LOGIN_WALLET_ORIGIN(), &LOGIN_REDIRECT_ORIGIN()}) {
    auto url = URL::fromString(*trusted);
    if (url && WKSecurityOrigin::of(*url).isSameOrigin(frame.securityOrigin)) return true;
  }
  return false;
}

std::string Describe(const WKFrameInfo& frame) {
  const WKSecurityOrigin& origin = frame.securityOrigin;
  std::string text = frame.isMainFrame ? "the main frame of " : "a subframe of ";
  if (origin.isOpaque()) return text + "an opaque origin";
  text += origin.protocol + "://" + origin.host;
  if (origin.port != 0) text += ":" + std::to_string(origin.port);
  return text;
}

}  // namespace

const std::string& LOGIN_WALLET_ORIGIN() {
  static const std::string origin = EnvironmentOverride("OBOLO_WALLET_ORIGIN", "https://wallet.obolo.io");
  return origin;
}

const std::string& LOGIN_REDIRECT_ORIGIN() {
  static const std::string origin = EnvironmentOverride("OBOLO_REDIRECT_ORIGIN", "https://app.obolo.io");
  return origin;
}

const std::string& LOGIN_LOGO_URL() {
  static const std::string url =
      EnvironmentOverride("OBOLO_LOGIN_LOGO_URL", "https://wallet.obolo.io/assets/publisher-logo.png");
  return url;
}

WebLoginVC::WebLoginVC() : webview(std::make_shared<WKWebView>(CGRect(), WKWebViewConfiguration())) {}

void WebLoginVC::loadView() {
  UIViewController::loadView();
  auto root = view();
  root->setBackgroundColor(UIColor::white());
  const CGRect bounds = root->bounds();
  const double statusBarHeight = statausbarHeight();
  addTopBar(statusBarHeight);

  WKWebViewConfiguration configuration;
  configuration.defaultWebpagePreferences.allowsContentJavaScript = true;
  configuration.userContentController = std::make_shared<WKUserContentController>();
  configuration.userContentController->add(selfAs(this), kLoginScriptHandlerName);

  // The full height of the view, not reduced by the offset: the page's lowest
  // (status bar + 44) points lie below the screen's edge. No autoresizing.
  webview = std::make_shared<WKWebView>(
      CGRect(0, statusBarHeight + kTopBarHeight, bounds.width(), bounds.height()), std::move(configuration));
  webview->setAutoresizingMask(UIViewAutoresizing::none);
  root->addSubview(webview);
}

void WebLoginVC::addTopBar(double statusBarHeight) {
  auto root = view();
  const double width = root->bounds().width();
  // The bar reaches up under the status bar, so nothing of the page or the
  // screen below shows through there.
  auto bar = std::make_shared<UIView>(CGRect(0, 0, width, statusBarHeight + kTopBarHeight));
  bar->setBackgroundColor(UIColor::white());
  bar->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleBottomMargin);

  auto done = std::make_shared<UIButton>(UIButton::ButtonType::system);
  done->setFrame(CGRect(width - kDoneButtonWidth - kDoneButtonMargin, statusBarHeight, kDoneButtonWidth,
                        kTopBarHeight));
  done->setAutoresizingMask(UIViewAutoresizing::flexibleLeftMargin);
  done->setTitle("Done", UIControlState::normal);
  done->setTitleColor(UIColor::systemBlue(), UIControlState::normal);
  done->titleLabel()->setFont(UIFont::boldSystemFont(17));
  done->setTag(kWebLoginDoneButtonTag);
  done->setAccessibilityIdentifier("Done");
  done->addTarget(selfAs(this), &WebLoginVC::onDoneButtonTapped, UIControlEvent::touchUpInside);
  bar->addSubview(done);

  // What the reader is doing here, across the bar's middle, and a hairline
  // under the bar.
  auto title = std::make_shared<UILabel>(
      CGRect(kDoneButtonWidth + kDoneButtonMargin, statusBarHeight, width - 2 * (kDoneButtonWidth + kDoneButtonMargin),
             kTopBarHeight));
  title->setText("Log in to your wallet");
  title->setFont(UIFont::boldSystemFont(17));
  title->setTextAlignment(NSTextAlignment::center);
  title->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  bar->addSubview(title);
  auto hairline = std::make_shared<UIView>(CGRect(0, statusBarHeight + kTopBarHeight - 1, width, 1));
  hairline->setBackgroundColor(UIColor::withWhite(0.8, 1));
  hairline->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleTopMargin);
  bar->addSubview(hairline);
  root->addSubview(bar);
}

void WebLoginVC::viewDidLoad() {
  UIViewController::viewDidLoad();
  loadRequest();
}

void WebLoginVC::viewDidDisappear(bool animated) {
  UIViewController::viewDidDisappear(animated);
  // Dismissed (the presentation links are cut before this call): take the
  // handler back so the content controller no longer keeps this screen alive.
  // A screen that merely went out of sight while still presented keeps it.
  if (presentingViewController()) return;
  webview->configuration().userContentController->removeScriptMessageHandler(kLoginScriptHandlerName);
}

double WebLoginVC::statausbarHeight() const {
  for (const auto& window : UIApplication::shared().windows()) {
    if (!window || !window->isKeyWindow()) continue;
    auto scene = window->windowScene();
    if (!scene) return 0;
    auto manager = scene->statusBarManager();
    if (!manager) return 0;
    return manager->statusBarFrame().height();
  }
  return 0;
}

std::string WebLoginVC::loginAddress() const {
  return LOGIN_WALLET_ORIGIN() + "/?login_source=ios_paywall&login_publisher_id=" + std::to_string(publisherId) +
         "&login_publisher_logo_url=" + LOGIN_LOGO_URL() + "&login_publisher_bid_id=" + std::to_string(obBidId) +
         "&login_redirect_url=" + LOGIN_REDIRECT_ORIGIN() + "/window-mode/index.html";
}

void WebLoginVC::loadRequest() {
  const std::string address = loginAddress();
  LogLine(address);
  auto url = URL::fromString(address);
  if (!url) {
    LogLine("Not a valid login address; the login page is not loaded");
    return;
  }
  const URLRequest request(*url, URLRequest::CachePolicy::useProtocolCachePolicy,
                           URLRequest::kDefaultTimeoutInterval);
  auto self = selfAs(this);
  webview->setUIDelegate(self);
  webview->setNavigationDelegate(self);
  webview->load(request);
}

void WebLoginVC::onDoneButtonTapped(const std::any& /*sender*/) {
  dismiss(/*animated=*/true, [done = doneCallback] {
    if (done) done();
  });
}

void WebLoginVC::userContentController(WKUserContentController& /*controller*/, const WKScriptMessage& message) {
  const json& body = message.body();
  LogLine(OneLine(body), LogContent::kCredential);
  if (!FromLoginPage(message.frameInfo())) {
    LogLine("Login message ignored: it came from " + Describe(message.frameInfo()) + ", not the login page");
    return;
  }
  if (!body.is_object()) return;
  auto deviceKey = TextAt(body, "device_key");
  if (!deviceKey) return;
  auto loginKey = TextAt(body, "login_key");
  if (!loginKey) return;

  // A second valid message while the dismissal runs finds the screen being
  // dismissed; that dismissal is refused and its completion never runs, so the
  // opener is called once.
  dismiss(/*animated=*/true, [callback = callback, deviceKey = std::move(*deviceKey),
                              loginKey = std::move(*loginKey)]() mutable {
    if (callback) callback(std::move(deviceKey), std::move(loginKey));
  });
}

}  // namespace obolo
