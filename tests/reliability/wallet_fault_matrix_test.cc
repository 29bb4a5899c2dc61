// Every fault the sandbox injects at the wallet screen's two calls, with the
// wallet opened from the floating button over a paywall: the balance and the
// logout. A failure leaves the wallet open with its label as it was, the
// paywall and its button untouched and the session kept; only a logout answer
// that decodes ends the session.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "reliability/screen_fault_test.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

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

class WalletFaultMatrixTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override {
    session_ = sandbox_.createSession(seed::kReaderEmail).value();
    reliability::StoreSession(session_);
    paywall_ = host_.load();
    Settle();
    ASSERT_TRUE(PaywallLook::Of(*paywall_, host_).offersCard());
    // The wallet button, as a reveal leaves it on the host screen.
    addFloatingButton(*host_.host, 0);
    host_.advance(1ms);
    ASSERT_TRUE(host_.hasFloatingButtonOnScreen());
    withButton_ = PaywallLook::Of(*paywall_, host_);
  }

  std::shared_ptr<LogoutController> OpenWallet() {
    EXPECT_TRUE(floatingButton(*host_.host)->tap());
    auto wallet = std::dynamic_pointer_cast<LogoutController>(host_.host->presentedViewController());
    EXPECT_NE(wallet, nullptr);
    return wallet;
  }

  // The paywall under the wallet: what it shows, apart from the wallet it
  // presents through the host.
  PaywallLook PaywallUnderTheWallet() const {
    PaywallLook look = PaywallLook::Of(*paywall_, host_);
    look.presenting = false;
    return look;
  }

  static std::string Balance(const LogoutController& wallet) { return wallet.lblBalance->text().value_or(""); }

  bool SessionKept() const {
    return StoredSession::Read() == StoredSession{session_.deviceKey, session_.accessToken, session_.refreshToken,
                                                  session_.email, session_.customerId};
  }

  PaywallHost host_{seed::kNormalArticleUrl};
  std::shared_ptr<PaywallVC> paywall_;
  sandbox::SessionKeys session_;
  PaywallLook withButton_;
};

TEST_F(WalletFaultMatrixTest, FaultsOnTheBalanceKeepTheLabelAndTheSession) {
  int cases = 0;
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
    sandbox_.setFault(sandbox::kBalanceAndArticlePath, fault);
    const std::size_t from = TransfersSoFar();
    auto wallet = OpenWallet();
    ASSERT_NE(wallet, nullptr);
    Settle();
    EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kBalanceAndArticlePath});
    EXPECT_EQ(Balance(*wallet),
              fault.kind == FaultKind::kSlowAnswer ? "EUR 10.0" : LogoutController::kBalancePlaceholder);
    EXPECT_EQ(host_.host->presentedViewController(), wallet) << "the wallet stays open";
    EXPECT_TRUE(SessionKept());
    EXPECT_EQ(PaywallUnderTheWallet(), withButton_);

    ASSERT_TRUE(wallet->btnCancel->tap());
    Settle();
    ASSERT_EQ(host_.host->presentedViewController(), nullptr);
    ++cases;
  }
  reliability::ReportFaultMatrixCases("wallet, balance", cases);
  EXPECT_EQ(cases, 9);
}

TEST_F(WalletFaultMatrixTest, FaultsOnTheLogoutKeepTheWalletOpenAndTheSessionUntilAnAnswerDecodes) {
  auto wallet = OpenWallet();
  ASSERT_NE(wallet, nullptr);
  Settle();
  ASSERT_EQ(Balance(*wallet), "EUR 10.0");

  int cases = 0;
  for (const auto& [name, fault] : AllFaults()) {
    SCOPED_TRACE(name);
    sandbox_.setFault(sandbox::kLogoutDevicePath, fault);
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(wallet->btnLogout->tap());
    Settle();
    host_.advance(1s);  // whatever a dismissal would have run
    Settle();
    if (fault.kind == FaultKind::kSlowAnswer) {
      // The logout went through: the wallet closed, the paywall heard of it,
      // took its button away and asked for a logged-out bid.
      // (Run by hand with the other cases in one process, the paywalls of
      // earlier cases hear the logout too: one logged-out bid each.)
      const std::vector<std::string> calls = CallsSince(from);
      ASSERT_GE(calls.size(), 2u);
      EXPECT_EQ(calls[0], sandbox::kLogoutDevicePath);
      for (std::size_t i = 1; i < calls.size(); ++i) EXPECT_EQ(calls[i], sandbox::kCreateLoggedOutBidPath);
      EXPECT_EQ(host_.host->presentedViewController(), nullptr);
      EXPECT_TRUE(StoredSession::Read().empty()) << ::testing::PrintToString(StoredSession::Read());
      EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), true);
      const PaywallLook look = PaywallLook::Of(*paywall_, host_);
      EXPECT_FALSE(look.floatingButton);
      EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
    } else {
      // No answer that decodes into LogoutData (its `data` is required):
      // nothing changes, and the reader can try again.
      EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kLogoutDevicePath});
      EXPECT_EQ(host_.host->presentedViewController(), wallet);
      EXPECT_EQ(Balance(*wallet), "EUR 10.0");
      EXPECT_TRUE(SessionKept());
      EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), false);
      EXPECT_EQ(PaywallUnderTheWallet(), withButton_);
    }
    ++cases;
  }
  reliability::ReportFaultMatrixCases("wallet, logout", cases);
  EXPECT_EQ(cases, 9);
}

}  // namespace
}  // namespace obolo
