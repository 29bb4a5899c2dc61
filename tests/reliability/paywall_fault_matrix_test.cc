// Every fault the sandbox injects at each service call of the paywall: the
// first bid, the token refresh, the customer bid that completes a login and
// the accept that pays. The reader never sees an error: the screen stays as it
// was and the stored session is unchanged, except where an answer that
// decodes is meant to change them.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "login/web_login_vc.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::AllFaults;
using reliability::PaywallLook;
using reliability::StoredSession;
using sandbox::FaultKind;
using testing::PaywallHost;
using Calls = std::vector<std::string>;
namespace seed = sandbox::seed;

class PaywallFaultMatrixTest : public reliability::ScreenFaultTest {
 protected:
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(PaywallFaultMatrixTest, FaultsOnTheFirstBidLeaveTheArticleReadable) {
  reliability::CaseCount cases("paywall, first bid (logged out, logged in)");
  for (bool loggedIn : {false, true}) {
    SCOPED_TRACE(loggedIn ? "logged-in bid" : "logged-out bid");
    if (loggedIn) reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
    const char* path = loggedIn ? sandbox::kCreateLoggedInBidPath : sandbox::kCreateLoggedOutBidPath;
    for (const auto& [name, fault] : AllFaults()) {
      SCOPED_TRACE(name);
      ++cases;
      const StoredSession session = StoredSession::Read();
      const std::int64_t publisherId = global_.publisherId();
      sandbox_.setFault(path, fault);
      PaywallHost host(seed::kNormalArticleUrl);
      const std::size_t from = TransfersSoFar();
      auto paywall = host.load();
      const PaywallLook waiting = PaywallLook::Of(*paywall, host);
      ASSERT_TRUE(waiting.readable());
      Settle();
      EXPECT_EQ(CallsSince(from), Calls{path});
      const PaywallLook look = PaywallLook::Of(*paywall, host);
      if (fault.kind == FaultKind::kSlowAnswer) {
        EXPECT_TRUE(look.offersCard() && look.unlockShown && look.bidId != 0) << ::testing::PrintToString(look);
        EXPECT_EQ(look.title, "Read the whole article");
      } else {
        EXPECT_EQ(look, waiting) << "the paywall stays hidden and the article readable";
        EXPECT_EQ(global_.publisherId(), publisherId) << "no bid configured a card";
      }
      EXPECT_EQ(StoredSession::Read(), session);
    }
  }
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheTokenRefreshFallBackOrWaitButNeverLoseTheSession) {
  reliability::CaseCount cases("paywall, token refresh");
  // A reader whose access token has expired and whose refresh token is good.
  const auto expired = sandbox_.createSession(seed::kReaderEmail, -1min, 1h).value();
  reliability::StoreSession(expired);
  // What follows the refresh, per fault: nothing when the answer decodes
  // without data (or never comes), a logged-out bid when it fails, and a
  // logged-in bid when the refresh goes through.
  const std::string none, out = sandbox::kCreateLoggedOutBidPath, in = sandbox::kCreateLoggedInBidPath;
  const std::array<std::string, 9> then = {none, out, out, out, none, none, out, none, in};
  const auto faults = AllFaults();
  for (std::size_t row = 0; row < faults.size(); ++row) {
    SCOPED_TRACE(faults[row].name);
    ++cases;
    sandbox_.setFault(sandbox::kNextAccessTokenPath, faults[row].fault);
    PaywallHost host(seed::kNormalArticleUrl);
    const std::size_t from = TransfersSoFar();
    auto paywall = host.load();
    const PaywallLook waiting = PaywallLook::Of(*paywall, host);
    Settle();
    const PaywallLook look = PaywallLook::Of(*paywall, host);
    const StoredSession session = StoredSession::Read();
    Calls calls{sandbox::kNextAccessTokenPath};
    if (!then[row].empty()) calls.push_back(then[row]);
    EXPECT_EQ(CallsSince(from), calls);
    if (then[row] == none) {
      EXPECT_EQ(look, waiting);
    } else {
      EXPECT_TRUE(look.offersCard() && (then[row] == in || look.unlockShown)) << ::testing::PrintToString(look);
    }
    if (then[row] == in) {
      // The new access token is stored; the rest of the session stays.
      EXPECT_NE(session.accessToken, expired.accessToken);
      EXPECT_TRUE(global_.isOBTokenValid());
      StoredSession rest = session;
      rest.accessToken = expired.accessToken;
      EXPECT_EQ(rest, StoredSession::Of(expired));
      ASSERT_NE(look.bidId, 0);
      EXPECT_EQ(sandbox_.bid(look.bidId)->customerId, expired.customerId);
    } else {
      EXPECT_EQ(session, StoredSession::Of(expired)) << "a failed refresh keeps the session for the next attempt";
    }
  }
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheCustomerBidLeaveTheCardAndNoSession) {
  reliability::CaseCount cases("paywall, customer bid");
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = host.load();
  Settle();
  ASSERT_TRUE(PaywallLook::Of(*paywall, host).offersCard());
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
    ++cases;
    const PaywallLook card = PaywallLook::Of(*paywall, host);
    sandbox_.setFault(sandbox::kCustomerBidPath, fault);
    ASSERT_TRUE(paywall->btnUnlock->tap());
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall->presentedViewController());
    ASSERT_NE(login, nullptr) << "a reader without a session is sent to log in";
    const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(login->webview->postMessageFromPage(
        kLoginScriptHandlerName, {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
    Settle();
    EXPECT_EQ(CallsSince(from), Calls{sandbox::kCustomerBidPath});
    EXPECT_TRUE(paywall->isRedirectToPaywall);
    const PaywallLook look = PaywallLook::Of(*paywall, host);
    const StoredSession session = StoredSession::Read();
    if (fault.kind == FaultKind::kSlowAnswer) {
      EXPECT_TRUE(look.offersCard() && look.unlockShown) << ::testing::PrintToString(look);
      EXPECT_EQ(look.splashMessage, "Thank you! The article is unlocked. Enjoy your reading.");
      EXPECT_EQ(session.deviceKey, keys.deviceKey);
      EXPECT_EQ(session.email, seed::kReaderEmail);
      EXPECT_EQ(session.customerId, seed::kReaderId);
      EXPECT_FALSE(session.refreshToken.empty());
      EXPECT_TRUE(global_.isOBTokenValid());
    } else {
      EXPECT_EQ(look, card) << "the login closed itself; the card is as it was";
      EXPECT_TRUE(session.empty()) << ::testing::PrintToString(session);
    }
  }
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheAcceptLeaveTheCardUnlessTheAnswerDecodes) {
  reliability::CaseCount cases("paywall, accept");
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  const StoredSession session = StoredSession::Read();
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
    ++cases;
    PaywallHost host(seed::kNormalArticleUrl);
    auto paywall = host.load();
    Settle();
    const PaywallLook card = PaywallLook::Of(*paywall, host);
    ASSERT_TRUE(card.offersCard());
    sandbox_.setFault(sandbox::kAcceptBidPath, fault);
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(paywall->btnUnlock->tap());
    Settle();
    EXPECT_EQ(CallsSince(from), Calls{sandbox::kAcceptBidPath});
    // Any answer that decodes counts as paid, whatever its `success`.
    const bool decodes = fault.kind == FaultKind::kServerError || fault.kind == FaultKind::kFailureWithMessage ||
                         fault.kind == FaultKind::kFailureWithoutMessage || fault.kind == FaultKind::kSlowAnswer;
    const PaywallLook look = PaywallLook::Of(*paywall, host);
    if (decodes) {
      EXPECT_TRUE(look.paywallShown && !look.cardShown && look.splashShown && look.blurShown)
          << "revealing: " << ::testing::PrintToString(look);
      host.advance(5100ms);
      const PaywallLook revealed = PaywallLook::Of(*paywall, host);
      EXPECT_TRUE(revealed.readable() && revealed.floatingButton) << ::testing::PrintToString(revealed);
    } else {
      EXPECT_EQ(look, card);
      host.advance(6s);
      EXPECT_EQ(PaywallLook::Of(*paywall, host), card) << "nothing is pending";
    }
    EXPECT_EQ(StoredSession::Read(), session);
    const bool paid = fault.kind == FaultKind::kSlowAnswer;
    EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(),
                     seed::kReaderBalance - (paid ? seed::kNormalArticlePrice : 0));
  }
}

}  // namespace
}  // namespace obolo
