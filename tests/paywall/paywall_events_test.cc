// What a host's observer hears of whole purchases against the sandbox: the
// exact sequence of events for a new reader, a returning reader, an article
// the paywall does not apply to, a service that fails or does not answer, and
// a logout; and that an observer that misbehaves changes nothing for the
// reader.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "entry/obolo.h"
#include "login/web_login_vc.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/event_recorder.h"
#include "support/log_capture.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::AllFaults;
using reliability::PaywallLook;
using sandbox::FaultKind;
using testing::EventRecorder;
using testing::PaywallHost;
using Lines = std::vector<std::string>;
namespace seed = sandbox::seed;

constexpr char kCardAtBottom[] = "card shown, price \"€0.50\", at bottom";
constexpr char kUnlockTapped[] = "unlock tapped, consent given";

class PaywallEventsTest : public reliability::ScreenFaultTest {
 protected:
  // The host opens its article with `observer` registered on the Obolo, which
  // it drops at once, as hosts may.
  std::shared_ptr<PaywallVC> Open(PaywallHost& host, const std::shared_ptr<PaywallObserver>& observer) {
    Obolo obolo(seed::kPublisherAccessKey, seed::kCategory, sandbox_.logoUrl(), host.articleUrl,
                seed::kPublisherCustomerId, seed::kPublisherDomain);
    obolo.addObserver(observer);
    obolo.loadPaywall(host.host, host.content, Position::bottom);
    auto paywall = std::dynamic_pointer_cast<PaywallVC>(host.host->children().back());
    Settle();
    return paywall;
  }
  std::shared_ptr<PaywallVC> Open(PaywallHost& host) { return Open(host, recorder_); }

  // Unlock without a session: the login screen opens and the page hands over
  // the reader's keys.
  void LogIn(PaywallVC& paywall) {
    ASSERT_TRUE(paywall.btnUnlock->tap());
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall.presentedViewController());
    ASSERT_NE(login, nullptr);
    const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
    ASSERT_TRUE(login->webview->postMessageFromPage(
        kLoginScriptHandlerName, {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
    Settle();
    ASSERT_EQ(paywall.presentedViewController(), nullptr);
  }

  // Unlock with a valid session pays; the splash goes and the wallet button
  // comes.
  void Pay(PaywallVC& paywall, PaywallHost& host) {
    ASSERT_TRUE(paywall.btnUnlock->tap());
    Settle();
    host.advance(5100ms);
    ASSERT_TRUE(host.hasFloatingButtonOnScreen());
  }

  std::shared_ptr<LogoutController> OpenWallet(PaywallHost& host) {
    EXPECT_TRUE(floatingButton(*host.host)->tap());
    auto wallet = std::dynamic_pointer_cast<LogoutController>(host.host->presentedViewController());
    EXPECT_NE(wallet, nullptr);
    Settle();
    return wallet;
  }

  void LogOut(LogoutController& wallet) {
    ASSERT_TRUE(wallet.btnLogout->tap());
    Settle();
  }

  // A new reader's whole purchase, logout included.
  void NewReaderPurchase(PaywallHost& host, const std::shared_ptr<PaywallObserver>& observer) {
    auto paywall = Open(host, observer);
    ASSERT_TRUE(PaywallLook::Of(*paywall, host).offersCard());
    LogIn(*paywall);
    Pay(*paywall, host);
    auto wallet = OpenWallet(host);
    ASSERT_NE(wallet, nullptr);
    LogOut(*wallet);
    ASSERT_TRUE(PaywallLook::Of(*paywall, host).offersCard());
  }

  std::shared_ptr<EventRecorder> recorder_ = std::make_shared<EventRecorder>();
};

const Lines kNewReaderEvents = {
    kCardAtBottom,
    kUnlockTapped,
    "login opened",
    "login completed",
    kCardAtBottom,
    kUnlockTapped,
    "article revealed, paid now",
    "wallet opened",
    "logout",
    kCardAtBottom,
};

TEST_F(PaywallEventsTest, ANewReaderLogsInPaysOpensTheWalletAndLogsOut) {
  PaywallHost host(seed::kNormalArticleUrl);
  NewReaderPurchase(host, recorder_);
  EXPECT_EQ(recorder_->described(), kNewReaderEvents);
  // Every event, the wallet's too, is about the article of the host screen.
  EXPECT_EQ(recorder_->articles(), Lines(kNewReaderEvents.size(), seed::kNormalArticleUrl));
  EXPECT_EQ(recorder_->offMainThread(), 0);
}

TEST_F(PaywallEventsTest, AReturningReaderPaysAtOnceAndIsRevealedWhatWasPaidBefore) {
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  PaywallHost first(seed::kInstantArticleUrl);
  auto paywall = Open(first);
  Pay(*paywall, first);
  EXPECT_EQ(recorder_->described(),
            (Lines{"card shown, price \"€0.20\", at bottom", kUnlockTapped, "article revealed, paid now"}));

  // The same article again, on another screen: paid for already.
  recorder_->clear();
  PaywallHost second(seed::kInstantArticleUrl);
  paywall = Open(second);
  EXPECT_EQ(recorder_->described(), Lines{"article revealed, already paid"});
  EXPECT_EQ(recorder_->articles(), Lines{seed::kInstantArticleUrl});
}

TEST_F(PaywallEventsTest, AnArticleThePaywallDoesNotApplyToIsNotApplicableAndNothingElse) {
  for (const char* article : {seed::kFreeArticleUrl, seed::kInactiveArticleUrl}) {
    SCOPED_TRACE(article);
    recorder_->clear();
    PaywallHost host(article);
    auto paywall = Open(host);
    EXPECT_TRUE(PaywallLook::Of(*paywall, host).readable());
    EXPECT_EQ(recorder_->described(), Lines{"not applicable"});
    EXPECT_EQ(recorder_->articles(), Lines{article});
  }
}

TEST_F(PaywallEventsTest, AFailedOrMissingFirstBidIsHeardExactlyAsTheReaderSawIt) {
  // Per fault of AllFaults(), in its order: what the observer hears of the
  // first bid. A call with no answer, or an answer that decodes without a bid,
  // leaves the article readable and is not heard; one that does not decode
  // is a failure; the logged-in bid also fails on an answer without success.
  const std::string none, failed = "failed", card = "card";
  const std::vector<std::string> loggedOut = {none, failed, failed, failed, none, none, failed, none, card};
  const std::vector<std::string> loggedIn = {failed, failed, failed, failed, failed,
                                             failed, failed, none,   card};
  const auto faults = AllFaults();
  for (bool withSession : {false, true}) {
    const char* path = withSession ? sandbox::kCreateLoggedInBidPath : sandbox::kCreateLoggedOutBidPath;
    const char* call = withSession ? "createLoggedInBid" : "createLoggedOutBid";
    if (withSession) reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
    for (std::size_t row = 0; row < faults.size(); ++row) {
      SCOPED_TRACE(std::string(call) + ", " + faults[row].name);
      recorder_->clear();
      sandbox_.setFault(path, faults[row].fault);
      PaywallHost host(seed::kNormalArticleUrl);
      Open(host);
      const std::string& expected = (withSession ? loggedIn : loggedOut)[row];
      const auto& events = recorder_->events();
      if (expected == none) {
        EXPECT_TRUE(events.empty()) << ::testing::PrintToString(events);
      } else if (expected == card) {
        EXPECT_EQ(recorder_->described(), Lines{kCardAtBottom});
      } else {
        ASSERT_EQ(events.size(), 1u) << ::testing::PrintToString(events);
        EXPECT_EQ(events[0].kind, PaywallEventKind::serviceCallFailed);
        EXPECT_EQ(ToString(events[0].call), call);
        // The refusal's message as the service wrote it; otherwise the kit's
        // own sentence on what could not be read.
        if (faults[row].fault.kind == FaultKind::kFailureWithMessage) {
          EXPECT_EQ(events[0].failureText, reliability::kRefusal);
        } else if (faults[row].fault.kind == FaultKind::kFailureWithoutMessage ||
                   faults[row].fault.kind == FaultKind::kServerError) {
          EXPECT_EQ(events[0].failureText, "");
        } else {
          EXPECT_TRUE(events[0].failureText.starts_with("The data couldn't be read because"))
              << events[0].failureText;
        }
      }
    }
  }
}

TEST_F(PaywallEventsTest, AFailedTokenRefreshIsHeardBeforeTheLoggedOutCard) {
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail, -1min, 1h).value());
  sandbox_.setFault(sandbox::kNextAccessTokenPath, sandbox::Fault::Once(FaultKind::kEmptyBody));
  PaywallHost host(seed::kNormalArticleUrl);
  Open(host);
  EXPECT_EQ(recorder_->described(),
            (Lines{"getNextAccessToken failed: \"The data couldn't be read because the data is empty.\"",
                   kCardAtBottom}));
}

TEST_F(PaywallEventsTest, LeavingTheLoginWithDoneOrWithoutConsentIsHeard) {
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = Open(host);
  // Without consent the tap is heard and nothing follows.
  ASSERT_TRUE(paywall->btnAgreement->tap());
  ASSERT_TRUE(paywall->btnUnlock->tap());
  Settle();
  EXPECT_EQ(paywall->presentedViewController(), nullptr);
  // With consent the login opens; Done closes it without a login.
  ASSERT_TRUE(paywall->btnAgreement->tap());
  ASSERT_TRUE(paywall->btnUnlock->tap());
  auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall->presentedViewController());
  ASSERT_NE(login, nullptr);
  auto done = std::dynamic_pointer_cast<UIButton>(login->view()->viewWithTag(kWebLoginDoneButtonTag));
  ASSERT_NE(done, nullptr);
  ASSERT_TRUE(done->tap());
  Settle();
  EXPECT_EQ(paywall->presentedViewController(), nullptr);
  EXPECT_EQ(recorder_->described(), (Lines{kCardAtBottom, "unlock tapped, no consent", kUnlockTapped,
                                           "login opened", "login closed with Done"}));
  EXPECT_TRUE(sandbox_.requestsTo(sandbox::kCustomerBidPath).empty());
}

TEST_F(PaywallEventsTest, TheWalletsFailedCallsAreHeardAndTheReaderStaysLoggedIn) {
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = Open(host);
  Pay(*paywall, host);
  recorder_->clear();
  sandbox_.setFault(sandbox::kBalanceAndArticlePath, sandbox::Fault::Once(FaultKind::kHtmlErrorPage));
  sandbox_.setFault(sandbox::kLogoutDevicePath, sandbox::Fault::Once(FaultKind::kMalformedJson));
  auto wallet = OpenWallet(host);
  ASSERT_NE(wallet, nullptr);
  LogOut(*wallet);
  EXPECT_EQ(host.host->presentedViewController(), wallet) << "a failed logout leaves the wallet open";
  EXPECT_TRUE(GlobalVariable::shared().isOBTokenExist());
  EXPECT_EQ(recorder_->described(),
            (Lines{"wallet opened",
                   "getBalanceAndArticles failed: \"The data couldn't be read because it isn't valid JSON.\"",
                   "logout failed: \"The data couldn't be read because it isn't valid JSON.\""}));
  EXPECT_EQ(recorder_->articles(), Lines(3, seed::kNormalArticleUrl));
}

TEST_F(PaywallEventsTest, EachHostScreenIsHeardByTheObserversOfItsObolo) {
  auto global = std::make_shared<EventRecorder>();
  PaywallObservers::global().add(global);
  auto other = std::make_shared<EventRecorder>();
  PaywallHost freeScreen(seed::kFreeArticleUrl);
  Open(freeScreen, other);
  PaywallHost normal(seed::kNormalArticleUrl);
  Open(normal);
  EXPECT_EQ(other->described(), Lines{"not applicable"});
  EXPECT_EQ(recorder_->described(), Lines{kCardAtBottom});
  EXPECT_EQ(global->described(), (Lines{"not applicable", kCardAtBottom}));

  // An observer removed through the Obolo hears nothing more of its paywalls;
  // the global one still does.
  Obolo obolo(seed::kPublisherAccessKey, seed::kCategory, sandbox_.logoUrl(), seed::kInstantArticleUrl,
              seed::kPublisherCustomerId, seed::kPublisherDomain);
  auto removed = std::make_shared<EventRecorder>();
  obolo.addObserver(removed);
  PaywallHost instant(seed::kInstantArticleUrl);
  obolo.loadPaywall(instant.host, instant.content, Position::top);
  Settle();
  obolo.removeObserver(removed);
  auto paywall = std::dynamic_pointer_cast<PaywallVC>(instant.host->children().back());
  ASSERT_TRUE(paywall->btnAgreement->tap());
  ASSERT_TRUE(paywall->btnUnlock->tap());
  Settle();
  EXPECT_EQ(removed->described(), Lines{"card shown, price \"€0.20\", at top"});
  EXPECT_EQ(global->described().back(), "unlock tapped, no consent");
  PaywallObservers::global().remove(global);
}

TEST_F(PaywallEventsTest, AnObserverThatMisbehavesChangesNothingForTheReader) {
  struct Row {
    const char* name;
    std::function<void(const std::shared_ptr<PaywallObserver>& self)> act;
    std::size_t heard;   // events the misbehaving observer hears
    std::size_t logged;  // lines the kit writes about it
  };
  const std::vector<Row> rows = {
      {"throws on every event", [](auto&) { throw std::runtime_error("analytics offline"); },
       kNewReaderEvents.size(), kNewReaderEvents.size()},
      {"removes itself on the first event", [](auto& self) { PaywallObservers::global().remove(self); }, 1,
       0},
      {"blocks a little on every event", [](auto&) { std::this_thread::sleep_for(5ms); },
       kNewReaderEvents.size(), 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    sandbox_.reset();
    GlobalVariable::shared().logout();
    // A recorder per purchase: the paywall of an earlier row cannot add to it.
    auto recorder = std::make_shared<EventRecorder>();
    testing::LogCapture log;
    std::shared_ptr<EventRecorder> misbehaving;
    misbehaving = std::make_shared<EventRecorder>([&](const PaywallEvent&) { row.act(misbehaving); });
    PaywallObservers::global().add(misbehaving);

    PaywallHost host(seed::kNormalArticleUrl);
    NewReaderPurchase(host, recorder);
    EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
    EXPECT_EQ(recorder->described(), kNewReaderEvents);
    EXPECT_EQ(misbehaving->events().size(), row.heard);
    int lines = 0;
    for (const auto& line : log.lines()) lines += line.starts_with("A paywall observer threw on");
    EXPECT_EQ(lines, static_cast<int>(row.logged));
    PaywallObservers::global().remove(misbehaving);
    misbehaving.reset();
  }
}

}  // namespace
}  // namespace obolo
