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

#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::PaywallLook;
using reliability::StoredSession;
using sandbox::FaultKind;
using Calls = std::vector<std::string>;
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
    withButton_ = PaywallUnderTheWallet();
  }

  std::shared_ptr<LogoutController> OpenWallet() {
    EXPECT_TRUE(floatingButton(*host_.host)->tap());
    return std::dynamic_pointer_cast<LogoutController>(host_.host->presentedViewController());
  }
  // What the paywall shows, apart from the wallet it presents through the host.
  PaywallLook PaywallUnderTheWallet() const {
    PaywallLook look = PaywallLook::Of(*paywall_, host_);
    look.presenting = false;
    return look;
  }
  static std::string Balance(const LogoutController& wallet) { return wallet.lblBalance->text().value_or(""); }

  testing::PaywallHost host_{seed::kNormalArticleUrl};
  std::shared_ptr<PaywallVC> paywall_;
  sandbox::SessionKeys session_;
  PaywallLook withButton_;
};

TEST_F(WalletFaultMatrixTest, FaultsOnTheBalanceKeepTheLabelAndTheSession) {
  reliability::CaseCount cases("wallet, balance");
  for (const auto& [name, fault] : reliability::AllFaults()) {
    SCOPED_TRACE(name);
    ++cases;
    sandbox_.setFault(sandbox::kBalanceAndArticlePath, fault);
    const std::size_t from = TransfersSoFar();
    auto wallet = OpenWallet();
    ASSERT_NE(wallet, nullptr);
    Settle();
    EXPECT_EQ(CallsSince(from), Calls{sandbox::kBalanceAndArticlePath});
    EXPECT_EQ(Balance(*wallet),
              fault.kind == FaultKind::kSlowAnswer ? "EUR 10.0" : LogoutController::kBalancePlaceholder);
    EXPECT_EQ(host_.host->presentedViewController(), wallet) << "the wallet stays open";
    EXPECT_EQ(StoredSession::Read(), StoredSession::Of(session_));
    EXPECT_EQ(PaywallUnderTheWallet(), withButton_);
    ASSERT_TRUE(wallet->btnCancel->tap());
    Settle();
    ASSERT_EQ(host_.host->presentedViewController(), nullptr);
  }
}

TEST_F(WalletFaultMatrixTest, FaultsOnTheLogoutKeepTheWalletOpenAndTheSessionUntilAnAnswerDecodes) {
  reliability::CaseCount cases("wallet, logout");
  auto wallet = OpenWallet();
  ASSERT_NE(wallet, nullptr);
  Settle();
  ASSERT_EQ(Balance(*wallet), "EUR 10.0");
  for (const auto& [name, fault] : reliability::AllFaults()) {
    SCOPED_TRACE(name);
    ++cases;
    sandbox_.setFault(sandbox::kLogoutDevicePath, fault);
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(wallet->btnLogout->tap());
    Settle();
    host_.advance(1s);  // whatever a dismissal would have run
    Settle();
    const Calls calls = CallsSince(from);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0], sandbox::kLogoutDevicePath);
    if (fault.kind == FaultKind::kSlowAnswer) {
      // The logout went through: the wallet closed, the paywall heard of it,
      // took its button away and asked for a logged-out bid. (Run by hand in
      // one process, the paywalls of earlier cases hear it too: one bid each.)
      ASSERT_GE(calls.size(), 2u);
      for (std::size_t i = 1; i < calls.size(); ++i) EXPECT_EQ(calls[i], sandbox::kCreateLoggedOutBidPath);
      EXPECT_EQ(host_.host->presentedViewController(), nullptr);
      EXPECT_TRUE(StoredSession::Read().empty()) << ::testing::PrintToString(StoredSession::Read());
      EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), true);
      const PaywallLook look = PaywallLook::Of(*paywall_, host_);
      EXPECT_TRUE(look.offersCard() && !look.floatingButton) << ::testing::PrintToString(look);
    } else {
      // No answer decodes into LogoutData (its `data` is required): nothing
      // changes, and the reader can try again.
      EXPECT_EQ(calls.size(), 1u);
      EXPECT_EQ(host_.host->presentedViewController(), wallet);
      EXPECT_EQ(Balance(*wallet), "EUR 10.0");
      EXPECT_EQ(StoredSession::Read(), StoredSession::Of(session_));
      EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), false);
      EXPECT_EQ(PaywallUnderTheWallet(), withButton_);
    }
  }
}

}  // namespace
}  // namespace obolo
