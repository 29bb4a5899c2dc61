#include "reader.h"

#include <obolo/entry/global_variable.h>
#include <obolo/platform/http_session.h>
#include <obolo/platform/main_loop.h>
#include <obolo/toolkit/ui_button.h>
#include <obolo/toolkit/wk_web_view.h>
#include <obolo/wallet/floating_button.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

namespace host_app {
namespace {

using obolo::MainLoop;
using obolo::UIView;
using obolo::UIViewController;

constexpr std::chrono::seconds kStepTimeout(30);

void Step(const std::string& text) { std::cout << "  " << text << std::endl; }

// Runs the kit's main loop until `done` holds; false after kStepTimeout.
bool WaitFor(const std::function<bool()>& done) { return MainLoop::main().runUntil(done, kStepTimeout); }

// The first view under `root` (depth first) that `match` accepts.
std::shared_ptr<UIView> FindView(const std::shared_ptr<UIView>& root,
                                 const std::function<bool(const std::shared_ptr<UIView>&)>& match) {
  if (!root) return nullptr;
  if (match(root)) return root;
  for (const auto& subview : root->subviews()) {
    if (auto found = FindView(subview, match)) return found;
  }
  return nullptr;
}

bool OnScreen(std::shared_ptr<UIView> view) {
  for (; view; view = view->superview()) {
    if (view->isHidden()) return false;
  }
  return true;
}

// The card's unlock button, found as a UI test finds it: by its identifier.
// Null while the card is not on screen.
std::shared_ptr<obolo::UIButton> UnlockButton(UIViewController& host) {
  auto button = std::dynamic_pointer_cast<obolo::UIButton>(
      FindView(host.view(), [](const auto& view) { return view->accessibilityIdentifier() == "unlock"; }));
  if (!button || !OnScreen(button) || !button->currentTitle()) return nullptr;
  return button;
}

// The screen the kit presented over the host's screens, if any.
std::shared_ptr<UIViewController> PresentedScreen(const UIViewController& host) {
  for (const auto& child : host.children()) {
    if (auto presented = child->presentedViewController()) return presented;
  }
  return host.presentedViewController();
}

// "https://127.0.0.1:8443" from "https://127.0.0.1:8443/login?x=1".
std::string OriginOf(const std::string& url) {
  const auto authority = url.find("://");
  if (authority == std::string::npos) return "";
  return url.substr(0, url.find('/', authority + 3));
}

// What the login page's script sends to its service, done with the kit's own
// HTTP session; the answer's JSON object, or null.
nlohmann::json PostAsThePage(const std::string& url, const nlohmann::json& body) {
  obolo::HttpRequest request;
  request.method = "POST";
  request.url = url;
  request.setValue("application/json", "Content-Type");
  request.body = body.dump();
  auto answer = std::make_shared<std::optional<obolo::HttpOutcome>>();
  obolo::HttpSession::shared()->dataTask(std::move(request), [answer](obolo::HttpOutcome outcome) {
    // Completions run on the session's thread; the answer is read on the main loop.
    MainLoop::main().post([answer, outcome = std::move(outcome)]() mutable { *answer = std::move(outcome); });
  });
  if (!WaitFor([&] { return answer->has_value(); }) || !(*answer)->body) return nullptr;
  auto json = nlohmann::json::parse(*(*answer)->body, nullptr, /*allow_exceptions=*/false);
  return json.is_object() ? json : nullptr;
}

std::string Text(const nlohmann::json& object, const char* key) {
  auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get<std::string>() : "";
}

// The reader logs in on the page the kit's login screen shows. This host has
// no browser engine, so it plays the page: it asks the sandbox for the one-time
// code the page would show, confirms it, and posts the keys to the kit's
// script handler, as the page does.
bool LogInOnThePage(UIViewController& login, const std::string& email, std::string& failure) {
  auto web = std::dynamic_pointer_cast<obolo::WKWebView>(FindView(login.view(), [](const auto& view) {
    return std::dynamic_pointer_cast<obolo::WKWebView>(view) != nullptr;
  }));
  if (!web || !web->lastRequest()) return failure = "the login screen shows no page", false;
  const std::string page = web->lastRequest()->url().absoluteString();
  Step("login page: " + page);
  const std::string origin = OriginOf(page);
  const auto code = PostAsThePage(origin + "/sandbox/login/code", {{"email", email}});
  if (Text(code, "code").empty()) return failure = "the login page's service sent no one-time code", false;
  const auto keys =
      PostAsThePage(origin + "/sandbox/login/verify", {{"email", email}, {"code", Text(code, "code")}});
  if (Text(keys, "deviceKey").empty() || Text(keys, "loginKey").empty()) {
    return failure = "the login page's service refused the code", false;
  }
  Step(email + " logged in with a one-time code; the page hands the keys to the kit");
  web->postMessageFromPage("obHandler",
                           {{"device_key", Text(keys, "deviceKey")}, {"login_key", Text(keys, "loginKey")}});
  return true;
}

}  // namespace

bool PlayPurchase(const std::shared_ptr<UIViewController>& host, const std::string& email,
                  std::string& failure) {
  if (!WaitFor([&] { return UnlockButton(*host) != nullptr; }))
    return failure = "the card did not show", false;
  Step("card: [" + UnlockButton(*host)->currentTitle().value_or("") + "]");
  if (!UnlockButton(*host)->tap()) return failure = "the unlock button could not be tapped", false;

  if (auto login = PresentedScreen(*host)) {
    Step("unlock tapped; not logged in, so the kit opens its login screen");
    if (!LogInOnThePage(*login, email, failure)) return false;
    // The login screen closes at once; the card is ready for a logged-in
    // reader when the session the login returned is stored.
    if (!WaitFor([&] {
          return !PresentedScreen(*host) && obolo::GlobalVariable::shared().isOBTokenExist() &&
                 UnlockButton(*host);
        })) {
      return failure = "the login did not complete", false;
    }
    Step("back on the card, logged in: [" + UnlockButton(*host)->currentTitle().value_or("") + "]");
    if (!UnlockButton(*host)->tap()) return failure = "the unlock button could not be tapped again", false;
  }
  Step("unlock tapped; the kit pays");

  const auto walletButtonShown = [&] {
    auto button = obolo::floatingButton(*host);
    return button && button->superview() == host->view();
  };
  if (!WaitFor(walletButtonShown)) return failure = "the article was not unlocked", false;
  Step("paid: the paywall is gone and the wallet button is on the host screen");
  if (!obolo::floatingButton(*host)->image(obolo::UIControlState::normal)) {
    return failure = "the wallet button has no icon: the kit's resources were not found", false;
  }
  return true;
}

}  // namespace host_app
