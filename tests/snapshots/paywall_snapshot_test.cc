// Pictures of the kit's screens over the sandbox, compared with the reference
// pictures in tests/snapshots/reference (see snapshot_match.h to re-record).

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <iterator>
#include <string>

#include "sandbox/default_world.h"
#include "sandbox/sandbox.h"
#include "snapshot_match.h"
#include "snapshot_screen.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

namespace seed = sandbox::seed;
using testing::MatchesSnapshot;
using testing::SnapshotScreen;

class PaywallSnapshotTest : public ::testing::Test {
 protected:
  void LogIn() { testing::StoreSession(sandbox_.createSession(seed::kReaderEmail).value()); }

  // A card on the screen, its texts and logo in.
  std::shared_ptr<PaywallVC> Card(SnapshotScreen& screen, Position position = Position::center) {
    auto paywall = screen.load(position);
    EXPECT_TRUE(screen.waitForCard(*paywall));
    return paywall;
  }

  testing::TemporaryStore store_;
  sandbox::Sandbox& sandbox_ = testing::SandboxEnvironment::sandbox();
};

TEST_F(PaywallSnapshotTest, TheCardAtTopCentreAndBottom) {
  const std::pair<Position, const char*> cases[] = {
      {Position::top, "card_top"}, {Position::center, "card_center"}, {Position::bottom, "card_bottom"}};
  for (const auto& [position, name] : cases) {
    SnapshotScreen screen(seed::kNormalArticleUrl);
    Card(screen, position);
    EXPECT_TRUE(MatchesSnapshot(screen.render(), name));
  }
}

TEST_F(PaywallSnapshotTest, TheCardWithoutItsBanner) {
  std::ifstream file(OBOLO_BID_ANSWER_FILE);
  auto answer = nlohmann::json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
  answer["data"]["paywallSettings"]["showMobileImage"] = false;
  sandbox_.setFault(sandbox::kCreateLoggedOutBidPath, sandbox::Fault::Custom(200, answer.dump()));
  SnapshotScreen screen(seed::kNormalArticleUrl);
  Card(screen);
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "card_without_banner"));
}

TEST_F(PaywallSnapshotTest, InsufficientFundsHideTheUnlockButton) {
  LogIn();
  SnapshotScreen screen(seed::kExpensiveArticleUrl);
  auto paywall = Card(screen);
  ASSERT_TRUE(paywall->btnUnlock->isHidden());
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "card_insufficient_funds"));
}

TEST_F(PaywallSnapshotTest, ConsentUntickedShowsItsWarning) {
  SnapshotScreen screen(seed::kNormalArticleUrl);
  auto paywall = Card(screen);
  paywall->btnAgreement->sendActions(UIControlEvent::touchUpInside);
  ASSERT_FALSE(paywall->isChecked());
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "card_consent_unticked"));
}

TEST_F(PaywallSnapshotTest, PayingShowsTheSplashThenTheArticleWithTheWalletButtonWhichOpensTheWallet) {
  LogIn();
  SnapshotScreen screen(seed::kNormalArticleUrl);
  auto paywall = Card(screen);
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_TRUE(screen.waitFor([&] { return paywall->unlockView->isHidden() && !paywall->splashView->isHidden(); }));
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "splash"));

  screen.advance(std::chrono::seconds(5));
  auto button = floatingButton(*screen.screen.host);
  ASSERT_TRUE(button && button->superview() == screen.screen.host->view());
  ASSERT_TRUE(paywall->view()->isHidden());
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "article_revealed"));

  button->sendActions(UIControlEvent::touchUpInside);
  auto wallet = std::dynamic_pointer_cast<LogoutController>(screen.screen.host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  ASSERT_TRUE(screen.waitFor([&] { return wallet->lblBalance->text() != LogoutController::kBalancePlaceholder; }));
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "wallet"));
}

TEST_F(PaywallSnapshotTest, TheLoginScreen) {
  SnapshotScreen screen(seed::kNormalArticleUrl);
  auto paywall = Card(screen);
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  ASSERT_NE(paywall->presentedViewController(), nullptr);
  screen.advance(std::chrono::milliseconds(1));  // the presentation completes
  EXPECT_TRUE(MatchesSnapshot(screen.render(), "login"));
}

TEST_F(PaywallSnapshotTest, OtherScreensLayTheCardOutAgain) {
  {
    SnapshotScreen smallPhone(seed::kNormalArticleUrl, CGSize{320, 568});
    Card(smallPhone);
    EXPECT_TRUE(MatchesSnapshot(smallPhone.render(2), "card_small_phone_2x"));
  }
  {
    SnapshotScreen tablet(seed::kNormalArticleUrl, CGSize{768, 1024});
    Card(tablet);
    EXPECT_TRUE(MatchesSnapshot(tablet.render(), "card_tablet"));
    tablet.screen.resize(CGSize{1024, 768});  // turned on its side
    EXPECT_TRUE(MatchesSnapshot(tablet.render(), "card_tablet_landscape"));
  }
}

// The snapshots guard the layout: a constraint's constant moved by a few
// points is a failing comparison.
TEST_F(PaywallSnapshotTest, AMovedConstraintConstantFailsTheSnapshot) {
  if (testing::RecordingSnapshots()) GTEST_SKIP() << "the references are being recorded";
  SnapshotScreen screen(seed::kNormalArticleUrl);
  auto paywall = Card(screen);
  ASSERT_TRUE(MatchesSnapshot(screen.render(), "card_center"));
  paywall->btnUnlockBottomMarginConstraint->setConstant(paywall->btnUnlockBottomMarginConstraint->constant() + 4);
  EXPECT_FALSE(MatchesSnapshot(screen.render(), "card_center", "card_center_moved"));
}

}  // namespace
}  // namespace obolo
