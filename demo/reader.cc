#include "demo/reader.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "demo/login_page_client.h"
#include "entry/global_variable.h"
#include "entry/obolo.h"
#include "entry/paywall_event.h"
#include "entry/paywall_observer.h"
#include "login/web_login_vc.h"
#include "network/network_manager.h"
#include "paywall/paywall_vc.h"
#include "platform/main_loop.h"
#include "platform/number_format.h"
#include "preview/article_screen.h"
#include "sandbox/default_world.h"
#include "sandbox/sandbox.h"
#include "toolkit/render/render.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

namespace obolo::demo {
namespace {

namespace seed = sandbox::seed;
using Clock = std::chrono::steady_clock;

constexpr auto kStepTimeout = std::chrono::seconds(20);

// The host's analytics: what the paywall reports, kept until the timeline
// prints it beside the step it happened in.
class EventLog : public PaywallObserver {
 public:
  void onPaywallEvent(const PaywallEvent& event) override { pending_.push_back(Describe(event)); }
  std::vector<std::string> take() { return std::exchange(pending_, {}); }

 private:
  std::vector<std::string> pending_;
};

// Prints one line per step: how long the step took, its name, what the
// reader sees; below it, the events the host heard during the step.
class Timeline {
 public:
  explicit Timeline(std::shared_ptr<EventLog> events) : events_(std::move(events)) {}

  void step(const std::string& name, const std::string& sees) {
    const auto now = Clock::now();
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(now - last_).count();
    last_ = now;
    std::printf("  %6lld ms  %-18s %s\n", static_cast<long long>(took), name.c_str(), sees.c_str());
    // Events are delivered on the main loop: one turn hands over those of
    // the step that just happened.
    MainLoop::main().runFor(std::chrono::milliseconds(0));
    for (const std::string& event : events_->take()) std::printf("%32sevent: %s\n", "", event.c_str());
    std::fflush(stdout);
  }
  long long totalMilliseconds() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start_).count();
  }

 private:
  std::shared_ptr<EventLog> events_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_ = start_;
};

// A picture of the screen at chosen steps, numbered in order, into a directory.
class Pictures {
 public:
  explicit Pictures(std::string directory) : directory_(std::move(directory)) {
    std::error_code ignored;  // a directory that cannot be made fails each picture, with the reason
    if (enabled()) std::filesystem::create_directories(directory_, ignored);
  }

  bool enabled() const { return !directory_.empty(); }

  void take(UIWindow& window, const std::string& name) {
    if (!enabled()) return;
    char number[16];
    std::snprintf(number, sizeof number, "%02d-", ++count_);
    const std::string path = (std::filesystem::path(directory_) / (number + name + ".png")).string();
    RenderOptions options;
    options.scale = 2;
    const std::string error = RenderView(window, options).writePng(path);
    if (!error.empty()) {
      std::printf("  no picture of %s: %s\n", name.c_str(), error.c_str());
      return;
    }
    written_.push_back(path);
  }

  void report() const {
    if (!enabled()) return;
    std::printf("Pictures of %zu steps in %s:\n", written_.size(), directory_.c_str());
    for (const auto& path : written_) std::printf("  %s\n", path.c_str());
  }

 private:
  std::string directory_;
  int count_ = 0;
  std::vector<std::string> written_;
};

std::string Quoted(const std::optional<std::string>& text) { return "\"" + text.value_or("") + "\""; }

std::string Shorten(const std::string& key) { return key.size() > 10 ? key.substr(0, 10) + "…" : key; }

class Reader {
 public:
  Reader(const DemoOptions& options, const Service& service)
      : options_(options),
        service_(service),
        screen_(CGSize{390, 844}, seed::kNormalArticleTitle),
        window_(screen_.window),
        host_(screen_.host),
        content_(screen_.content),
        pictures_(options.snapshotDir) {}

  int play() {
    std::printf("Obolo demo: scenario %s, card at %s, service %s%s\n", ScenarioName(options_.scenario).c_str(),
                std::string(ToString(options_.position)).c_str(), service_.origin.c_str(),
                service_.sandbox ? " (embedded sandbox)" : "");
    switch (options_.scenario) {
      case Scenario::kNewReader:
        return newReader();
      case Scenario::kReturningReader:
        return returningReader(seed::kNormalArticleUrl, std::chrono::hours(1));
      case Scenario::kExpiredToken:
        return returningReader(seed::kNormalArticleUrl, std::chrono::seconds(-60));
      case Scenario::kInsufficientFunds:
        return insufficientFunds();
      case Scenario::kServiceDown:
        return serviceDown();
    }
    return 2;
  }

 private:
  // --- Steps ---

  void load(const std::string& articleUrl) {
    Obolo obolo(seed::kPublisherAccessKey, seed::kCategory, service_.logoUrl, articleUrl, seed::kPublisherCustomerId,
                seed::kPublisherDomain);
    obolo.addObserver(events_);
    obolo.loadPaywall(host_, content_, options_.position);
    paywall_ = std::dynamic_pointer_cast<PaywallVC>(host_->children().back());
    timeline_.step("waiting", std::string("paywall hidden until the bid arrives; article readable: ") +
                                  (paywall_->view()->isHidden() ? "yes" : "no"));
    pictures_.take(*window_, "waiting");
  }

  bool waitFor(const std::function<bool()>& done, const char* what) {
    if (MainLoop::main().runUntil(done, kStepTimeout)) return true;
    std::printf("  step did not happen in %lld s: %s\n", static_cast<long long>(kStepTimeout.count()), what);
    return false;
  }

  bool cardShown() const {
    return !paywall_->view()->isHidden() && !paywall_->unlockView->isHidden() && paywall_->lblObTitle->text();
  }

  std::string card() const {
    std::string text = Quoted(paywall_->lblObTitle->text()) + " · " + paywall_->lblObCustomerPrice->text().value_or("");
    if (paywall_->btnUnlock->isHidden()) {
      text += " · unlock button hidden";
    } else {
      text += " · [" + paywall_->btnUnlock->title(UIControlState::normal).value_or("") + "]";
    }
    if (!paywall_->btnAgreement->isHidden()) text += " · consent ticked";
    return text;
  }

  bool showCard(const char* name = "card", const char* picture = "card") {
    if (!waitFor([&] { return cardShown(); }, "the card")) return false;
    MainLoop::main().runFor(std::chrono::milliseconds(1));  // the card's texts follow on the next turn
    timeline_.step(name, card());
    if (pictures_.enabled()) {
      // The publisher's logo comes separately; a picture is better with it.
      MainLoop::main().runUntil([&] { return paywall_->imgPublisherLogo->image() != nullptr; },
                                std::chrono::seconds(5));
      pictures_.take(*window_, picture);
    }
    return true;
  }

  bool logIn() {
    paywall_->btnUnlock->sendActions(UIControlEvent::touchUpInside);
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall_->presentedViewController());
    if (!login) {
      std::printf("  the login screen did not open\n");
      return false;
    }
    timeline_.step("unlock", "tapped with consent given; no session yet, so the login screen opens");
    const auto request = login->webview->lastRequest();
    timeline_.step("login screen", request ? request->url().absoluteString() : std::string("(nothing loaded)"));
    MainLoop::main().runFor(std::chrono::milliseconds(1));  // the presentation completes
    pictures_.take(*window_, "login-screen");

    std::string error;
    const auto keys = LogInOnPage(service_.origin, service_.caFile, seed::kReaderEmail, error);
    if (!keys) {
      std::printf("  logging in needs the service's page in a browser: %s\n", error.c_str());
      return false;
    }
    timeline_.step("login page", std::string(seed::kReaderEmail) + " enters the one-time code; the page posts " +
                                     "device_key=" + Shorten(keys->deviceKey) + " login_key=" +
                                     Shorten(keys->loginKey));
    login->webview->postMessageFromPage("obHandler", {{"device_key", keys->deviceKey}, {"login_key", keys->loginKey}});
    GlobalVariable& global = GlobalVariable::shared();
    if (!waitFor([&] { return paywall_->presentedViewController() == nullptr && global.isOBTokenExist(); },
                 "the customer bid")) {
      return false;
    }
    timeline_.step("customer bid", "login screen closed; logged in as " + global.getEmail() + ", customer " +
                                       std::to_string(global.getCustomerId()) + "; session stored");
    return true;
  }

  bool pay() {
    paywall_->btnUnlock->sendActions(UIControlEvent::touchUpInside);
    timeline_.step("unlock", "tapped; the bid is accepted");
    if (!waitFor([&] { return paywall_->unlockView->isHidden(); }, "the accepted bid")) return false;
    timeline_.step("accept", "paid; splash " + Quoted(paywall_->lblSplashMessage->text()) + " for 5 seconds");
    pictures_.take(*window_, "splash");
    if (!waitFor([&] { return paywall_->view()->isHidden(); }, "the end of the splash")) return false;
    if (!waitFor([&] { return floatingButton(*host_) && floatingButton(*host_)->superview() == host_->view(); },
                 "the wallet button")) {
      return false;
    }
    const CGPoint at = floatingButton(*host_)->center();
    timeline_.step("article readable", "paywall gone; wallet button at (" + ShortestDecimal(at.x) + ", " +
                                           ShortestDecimal(at.y) + ")");
    pictures_.take(*window_, "article");
    return true;
  }

  bool walletAndLogout() {
    floatingButton(*host_)->sendActions(UIControlEvent::touchUpInside);
    auto wallet = std::dynamic_pointer_cast<LogoutController>(host_->presentedViewController());
    if (!wallet) {
      std::printf("  the wallet did not open\n");
      return false;
    }
    const auto before = wallet->lblBalance->text();
    if (!waitFor([&] { return wallet->lblBalance->text() != before; }, "the balance")) return false;
    timeline_.step("wallet", "balance " + wallet->lblBalance->text().value_or(""));
    pictures_.take(*window_, "wallet");

    wallet->btnLogout->sendActions(UIControlEvent::touchUpInside);
    GlobalVariable& global = GlobalVariable::shared();
    if (!waitFor([&] { return host_->presentedViewController() == nullptr && !global.isOBTokenExist(); },
                 "the logout")) {
      return false;
    }
    timeline_.step("logout", "wallet closed; session cleared; the paywall asks for a new bid");
    return showCard("card back", "card-back");
  }

  void storeSession(const sandbox::SessionKeys& keys) {
    GlobalVariable& global = GlobalVariable::shared();
    global.setDeviceKey(keys.deviceKey);
    global.setAccessToken(keys.accessToken);
    global.setRefreshToken(keys.refreshToken);
    global.setEmail(keys.email);
    global.setCustomerId(keys.customerId);
  }

  int finish(bool ok) {
    pictures_.report();
    if (ok) std::printf("Done in %lld ms.\n", timeline_.totalMilliseconds());
    return ok ? 0 : 1;
  }

  // --- Scenarios ---

  int newReader() {
    load(seed::kNormalArticleUrl);
    const bool ok = showCard() && logIn() && showCard("card", "card-logged-in") && pay() && walletAndLogout();
    return finish(ok);
  }

  int returningReader(const char* articleUrl, std::chrono::seconds accessLifetime) {
    if (service_.sandbox == nullptr) {
      std::printf("  this scenario seeds a session in the embedded sandbox; run it without --base-url\n");
      return 2;
    }
    storeSession(service_.sandbox->createSession(seed::kReaderEmail, accessLifetime, std::chrono::hours(24)).value());
    timeline_.step("session", std::string(accessLifetime.count() > 0 ? "a valid" : "an expired") +
                                  " access token is stored for " + seed::kReaderEmail);
    const std::string stored = GlobalVariable::shared().getAccessToken();
    load(articleUrl);
    if (!showCard()) return finish(false);
    if (GlobalVariable::shared().getAccessToken() != stored) {
      timeline_.step("refreshed", "the expired access token was replaced before the bid; refresh token kept");
    }
    const bool ok = pay() && walletAndLogout();
    return finish(ok);
  }

  int insufficientFunds() {
    if (service_.sandbox == nullptr) {
      std::printf("  this scenario seeds a session in the embedded sandbox; run it without --base-url\n");
      return 2;
    }
    storeSession(service_.sandbox->createSession(seed::kReaderEmail).value());
    timeline_.step("session", std::string("logged in; the wallet holds ") +
                                  ShortestDecimal(service_.sandbox->balance(seed::kReaderEmail).value_or(0)) + " EUR");
    load(seed::kExpensiveArticleUrl);
    if (!showCard()) return finish(false);
    const bool tapped = paywall_->btnUnlock->tap();
    timeline_.step("unlock", tapped ? "tapped" : "nothing to tap: the balance is below the price, and no credit");
    return finish(paywall_->btnUnlock->isHidden() && !tapped);
  }

  int serviceDown() {
    if (service_.sandbox != nullptr) service_.sandbox->stop();
    timeline_.step("service down", "nothing answers at " + service_.origin);
    load(seed::kNormalArticleUrl);
    MainLoop::main().runFor(std::chrono::seconds(3));
    const bool readable = paywall_->view()->isHidden();
    timeline_.step("3 s later", std::string("no bid arrived; ") +
                                    (readable ? "the paywall stays out of the way and the article is readable"
                                              : "the paywall covers the article"));
    return finish(readable);
  }

  const DemoOptions& options_;
  const Service& service_;
  std::shared_ptr<EventLog> events_ = std::make_shared<EventLog>();
  Timeline timeline_{events_};
  ArticleScreen screen_;
  std::shared_ptr<UIWindow> window_;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<UIView> content_;
  std::shared_ptr<PaywallVC> paywall_;
  Pictures pictures_;
};

}  // namespace

int PlayReader(const DemoOptions& options, const Service& service) {
  Reader reader(options, service);
  const int status = reader.play();
  // Lets answers still on their way land before the service stops.
  MainLoop::main().runFor(std::chrono::milliseconds(50));
  return status;
}

}  // namespace obolo::demo
