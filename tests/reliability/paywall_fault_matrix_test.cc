// Every fault the sandbox injects at each service call of the paywall: the
// first bid (logged out and logged in), the token refresh, the customer bid
// that completes a login, and the accept that pays. The reader never sees an
// error: the screen stays as it was and the stored session is unchanged,
// except where an answer that decodes is meant to change them.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "entry/global_variable.h"
#include "login/web_login_vc.h"
#include "reliability/screen_fault_test.h"
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
namespace seed = sandbox::seed;

constexpr char kCardTitle[] = "Read the whole article";
constexpr char kThanks[] = "Thank you! The article is unlocked. Enjoy your reading.";

class PaywallFaultMatrixTest : public reliability::ScreenFaultTest {
 protected:
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(PaywallFaultMatrixTest, FaultsOnTheFirstBidLeaveTheArticleReadable) {
  int cases = 0;
  for (bool loggedIn : {false, true}) {
    SCOPED_TRACE(loggedIn ? "logged-in bid" : "logged-out bid");
    if (loggedIn) reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
    const char* path = loggedIn ? sandbox::kCreateLoggedInBidPath : sandbox::kCreateLoggedOutBidPath;
    for (const auto& [name, fault] : AllFaults()) {
      SCOPED_TRACE(name);
      const StoredSession session = StoredSession::Read();
      const std::int64_t publisherId = global_.publisherId();
      sandbox_.setFault(path, fault);
      PaywallHost host(seed::kNormalArticleUrl);
      const std::size_t from = TransfersSoFar();
      auto paywall = host.load();
      const PaywallLook waiting = PaywallLook::Of(*paywall, host);
      ASSERT_TRUE(waiting.readable());
      Settle();
      EXPECT_EQ(CallsSince(from), std::vector<std::string>{path});

      const PaywallLook look = PaywallLook::Of(*paywall, host);
      if (fault.kind == FaultKind::kSlowAnswer) {
        EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
        EXPECT_TRUE(look.unlockShown);
        EXPECT_EQ(look.title, kCardTitle);
        EXPECT_NE(look.bidId, 0);
      } else {
        EXPECT_EQ(look, waiting) << "the paywall stays hidden and the article readable";
        EXPECT_EQ(global_.publisherId(), publisherId) << "no bid configured a card";
      }
      EXPECT_EQ(StoredSession::Read(), session);
      ++cases;
    }
  }
  reliability::ReportFaultMatrixCases("paywall, first bid (logged out, logged in)", cases);
  EXPECT_EQ(cases, 18);
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheTokenRefreshFallBackOrWaitButNeverLoseTheSession) {
  // A reader whose access token has expired and whose refresh token is good.
  const auto expired = sandbox_.createSession(seed::kReaderEmail, -1min, 1h).value();
  reliability::StoreSession(expired);
  enum class Then { kNothingFollows, kLoggedOutBid, kLoggedInBid };
  const std::array<Then, 9> expected = {
      Then::kNothingFollows,  // {} decodes into an envelope without data
      Then::kLoggedOutBid,    // HTML page: the refresh failed
      Then::kLoggedOutBid,    // malformed JSON
      Then::kLoggedOutBid,    // wrong type
      Then::kNothingFollows,  // refused with a message: decodes, no data
      Then::kNothingFollows,  // refused without a message
      Then::kLoggedOutBid,    // empty body
      Then::kNothingFollows,  // no answer at all
      Then::kLoggedInBid,     // slow: the refresh goes through
  };
  const auto faults = AllFaults();
  int cases = 0;
  for (std::size_t row = 0; row < faults.size(); ++row) {
    SCOPED_TRACE(faults[row].name);
    sandbox_.setFault(sandbox::kNextAccessTokenPath, faults[row].fault);
    PaywallHost host(seed::kNormalArticleUrl);
    const std::size_t from = TransfersSoFar();
    auto paywall = host.load();
    const PaywallLook waiting = PaywallLook::Of(*paywall, host);
    Settle();

    const PaywallLook look = PaywallLook::Of(*paywall, host);
    const StoredSession session = StoredSession::Read();
    switch (expected[row]) {
      case Then::kNothingFollows:
        EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kNextAccessTokenPath});
        EXPECT_EQ(look, waiting);
        EXPECT_EQ(session, StoredSession({expired.deviceKey, expired.accessToken, expired.refreshToken,
                                          expired.email, expired.customerId}));
        break;
      case Then::kLoggedOutBid:
        EXPECT_EQ(CallsSince(from),
                  (std::vector<std::string>{sandbox::kNextAccessTokenPath, sandbox::kCreateLoggedOutBidPath}));
        EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
        EXPECT_TRUE(look.unlockShown);
        EXPECT_EQ(session, StoredSession({expired.deviceKey, expired.accessToken, expired.refreshToken,
                                          expired.email, expired.customerId}))
            << "a failed refresh keeps the session for the next attempt";
        break;
      case Then::kLoggedInBid:
        EXPECT_EQ(CallsSince(from),
                  (std::vector<std::string>{sandbox::kNextAccessTokenPath, sandbox::kCreateLoggedInBidPath}));
        EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
        // The new access token is stored; the refresh token stays.
        EXPECT_NE(session.accessToken, expired.accessToken);
        EXPECT_TRUE(global_.isOBTokenValid());
        EXPECT_EQ(session.refreshToken, expired.refreshToken);
        EXPECT_EQ(session.deviceKey, expired.deviceKey);
        EXPECT_EQ(session.email, expired.email);
        EXPECT_EQ(session.customerId, expired.customerId);
        ASSERT_NE(look.bidId, 0);
        EXPECT_EQ(sandbox_.bid(look.bidId)->customerId, expired.customerId);
        break;
    }
    ++cases;
  }
  reliability::ReportFaultMatrixCases("paywall, token refresh", cases);
  EXPECT_EQ(cases, 9);
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheCustomerBidLeaveTheCardAndNoSession) {
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = host.load();
  Settle();
  ASSERT_TRUE(PaywallLook::Of(*paywall, host).offersCard());

  int cases = 0;
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
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
    EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kCustomerBidPath});
    EXPECT_TRUE(paywall->isRedirectToPaywall);

    const PaywallLook look = PaywallLook::Of(*paywall, host);
    const StoredSession session = StoredSession::Read();
    if (fault.kind == FaultKind::kSlowAnswer) {
      EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
      EXPECT_TRUE(look.unlockShown) << "the reader's balance covers the price";
      EXPECT_EQ(look.splashMessage, kThanks);
      EXPECT_EQ(session.deviceKey, keys.deviceKey);
      EXPECT_EQ(session.email, seed::kReaderEmail);
      EXPECT_EQ(session.customerId, seed::kReaderId);
      EXPECT_FALSE(session.refreshToken.empty());
      EXPECT_TRUE(global_.isOBTokenValid());
    } else {
      // The login screen closed itself; the card is as it was.
      EXPECT_EQ(look, card);
      EXPECT_TRUE(session.empty()) << ::testing::PrintToString(session);
    }
    ++cases;
  }
  reliability::ReportFaultMatrixCases("paywall, customer bid", cases);
  EXPECT_EQ(cases, 9);
}

TEST_F(PaywallFaultMatrixTest, FaultsOnTheAcceptLeaveTheCardUnlessTheAnswerDecodes) {
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  const StoredSession session = StoredSession::Read();
  int cases = 0;
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
    PaywallHost host(seed::kNormalArticleUrl);
    auto paywall = host.load();
    Settle();
    const PaywallLook card = PaywallLook::Of(*paywall, host);
    ASSERT_TRUE(card.offersCard());

    sandbox_.setFault(sandbox::kAcceptBidPath, fault);
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(paywall->btnUnlock->tap());
    Settle();
    EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kAcceptBidPath});

    // Any answer that decodes counts as paid, whatever its `success`.
    const bool decodes = fault.kind == FaultKind::kServerError || fault.kind == FaultKind::kFailureWithMessage ||
                         fault.kind == FaultKind::kFailureWithoutMessage || fault.kind == FaultKind::kSlowAnswer;
    const PaywallLook look = PaywallLook::Of(*paywall, host);
    if (decodes) {
      EXPECT_TRUE(look.paywallShown && !look.cardShown && look.splashShown && look.blurShown)
          << "revealing: " << ::testing::PrintToString(look);
      host.advance(5100ms);
      const PaywallLook revealed = PaywallLook::Of(*paywall, host);
      EXPECT_TRUE(revealed.readable()) << ::testing::PrintToString(revealed);
      EXPECT_TRUE(revealed.floatingButton);
    } else {
      EXPECT_EQ(look, card);
      host.advance(6s);
      EXPECT_EQ(PaywallLook::Of(*paywall, host), card) << "nothing is pending";
    }
    EXPECT_EQ(StoredSession::Read(), session);
    const bool paid = fault.kind == FaultKind::kSlowAnswer;
    EXPECT_DOUBLE_EQ(sandbox_.balance(seed::kReaderEmail).value(),
                     paid ? seed::kReaderBalance - seed::kNormalArticlePrice : seed::kReaderBalance);
    ++cases;
  }
  reliability::ReportFaultMatrixCases("paywall, accept", cases);
  EXPECT_EQ(cases, 9);
}

}  // namespace
}  // namespace obolo
