// The paywall as a reader sees it: what is hidden, what the card says, where
// it sits. Faults of the service are covered by the paywall fault matrix.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "entry/obolo_storyboard.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "toolkit/ui_application.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using nlohmann::json;
using sandbox::Fault;
using testing::PaywallHost;
using testing::SandboxEnvironment;
namespace seed = sandbox::seed;

// A bid the paywall applies to and that is not paid for.
json OfferedBid() {
  return {{"oboloBidId", 901},
          {"publisherId", 7},
          {"articleActive", true},
          {"isPaywallEnabledInCountry", true},
          {"unlocked", false},
          {"oboloTransactionMode", "normal"},
          {"articlePriceInLocalCurrency", 0.5},
          {"paywallSettings",
           {{"obTitleText", "Read the whole story"},
            {"obPromptText", "Unlock this article for 50 cents"},
            {"obButtonText", "Unlock for €0.50"},
            {"obBalanceText", "I agree to pay from my wallet"},
            {"obAutoUnlockText", "Enjoy your reading"},
            {"showMobileImage", true},
            {"showDesktopImage", false},
            {"obCustomerPrice", "€0.50"}}}};
}

std::string Answer(const json& data) { return json{{"success", true}, {"data", data}}.dump(); }

class PaywallScreenTest : public ::testing::Test {
 protected:
  // The next logged-out bid is answered with `data`.
  void AnswerNextBidWith(const json& data) {
    sandbox_.setFault(sandbox::kCreateLoggedOutBidPath, Fault::Custom(200, Answer(data)));
  }
  // Loads the paywall and waits until its card is filled with the answer's texts.
  std::shared_ptr<PaywallVC> LoadWithCard(Position position = Position::center) {
    auto paywall = host_.load(position);
    EXPECT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall) && paywall->lblObTitle->text(); }));
    return paywall;
  }

  testing::TemporaryStore store_;
  PaywallHost host_{seed::kNormalArticleUrl};
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
};

TEST_F(PaywallScreenTest, TheCardShowsTheServicesTextsOnceTheBidReachesTheMainLoop) {
  AnswerNextBidWith(OfferedBid());
  testing::TransferObserver transfers;
  auto paywall = host_.load();
  ASSERT_TRUE(transfers.waitForHandled(2));  // the bid and the logo, handled on the session's thread
  EXPECT_TRUE(paywall->view()->isHidden());
  EXPECT_TRUE(paywall->unlockView->isHidden());
  EXPECT_TRUE(paywall->splashView->isHidden());
  EXPECT_TRUE(paywall->visualEffectView->isHidden());
  EXPECT_TRUE(paywall->effectView->isHidden());
  MainLoop::main().runFor(std::chrono::milliseconds(1));
  ASSERT_TRUE(PaywallHost::isCardShown(*paywall));

  EXPECT_EQ(paywall->lblObTitle->text(), "Read the whole story");
  EXPECT_EQ(paywall->lblObPromt->text(), "Unlock this article for 50 cents");
  EXPECT_EQ(paywall->lblObCustomerPrice->text(), "€0.50");
  EXPECT_EQ(paywall->btnUnlock->title(UIControlState::normal), "Unlock for €0.50");
  EXPECT_FALSE(paywall->btnAgreement->isHidden());
  EXPECT_EQ(paywall->btnAgreement->title(UIControlState::normal), "I agree to pay from my wallet");
  EXPECT_EQ(paywall->btnAgreementBottomConstraint->constant(), 20);
  EXPECT_EQ(paywall->lblSplashMessage->text(), "Enjoy your reading");
  ASSERT_NE(paywall->imgBanner->image(), nullptr);
  EXPECT_EQ(paywall->imgBanner->image()->name(), "background");
  EXPECT_EQ(paywall->imgBannerTopMargin->constant(), 20);
  EXPECT_EQ(paywall->imgBannerHeightConstraint->constant(), 174);
  EXPECT_FALSE(paywall->btnUnlock->isHidden());
  // The blur over the article shows with the card.
  EXPECT_FALSE(paywall->visualEffectView->isHidden());
  EXPECT_EQ(paywall->visualEffectView->superview(), host_.content);
  // The bid's values are kept for the next calls.
  EXPECT_EQ(paywall->obBidId, 901);
  EXPECT_EQ(paywall->transactionMode, "normal");
  EXPECT_EQ(GlobalVariable::shared().publisherId(), 7);

  // Full screen, the storyboard's own blur covers the host before any bid.
  auto fullScreen = host_.loadFullScreen();
  EXPECT_TRUE(fullScreen->unlockView->isHidden());
  EXPECT_FALSE(fullScreen->effectView->isHidden());
}

TEST_F(PaywallScreenTest, UnlockWaitsForConsentToTheLinkedTermsWhenTheCardAsksForIt) {
  AnswerNextBidWith(OfferedBid());
  auto paywall = LoadWithCard();
  ASSERT_NE(paywall->btnAgreement->image(UIControlState::normal), nullptr);
  EXPECT_EQ(paywall->btnAgreement->image(UIControlState::normal)->name(), "checkbox");
  EXPECT_EQ(paywall->lblWarning->text(), "");

  paywall->btnAgreement->sendActions(UIControlEvent::touchUpInside);
  EXPECT_EQ(paywall->btnAgreement->image(UIControlState::normal)->name(), "blankbox");
  EXPECT_EQ(paywall->lblWarning->text(), "Please agree to terms & policies.");
  paywall->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  MainLoop::main().runFor(std::chrono::seconds(1));
  EXPECT_EQ(paywall->presentedViewController(), nullptr);

  paywall->btnAgreement->sendActions(UIControlEvent::touchUpInside);
  EXPECT_EQ(paywall->btnAgreement->image(UIControlState::normal)->name(), "checkbox");
  EXPECT_EQ(paywall->lblWarning->text(), "");

  // The terms the reader agrees to are a tap away; their titles are underlined.
  for (const auto& button : paywall->btnConsent) button->sendActions(UIControlEvent::touchUpInside);
  std::vector<std::string> opened;
  for (const auto& url : UIApplication::shared().openedURLs()) opened.push_back(url.absoluteString());
  EXPECT_EQ(opened, (std::vector<std::string>{"https://obolo.io/terms", "https://obolo.io/privacy",
                                              "mailto:support@obolo.io"}));
  EXPECT_TRUE(paywall->btnConsent[0]->attributedTitle(UIControlState::normal).has_value());

  // Without a balance text (and a banner) there is nothing to agree to: the
  // checkbox and banner take no room and unlock opens the login screen.
  json bid = OfferedBid();
  bid["paywallSettings"]["obBalanceText"] = "";
  bid["paywallSettings"]["showMobileImage"] = false;
  AnswerNextBidWith(bid);
  auto plain = LoadWithCard();
  EXPECT_TRUE(plain->btnAgreement->isHidden());
  EXPECT_EQ(plain->btnAgreementBottomConstraint->constant(), 0);
  EXPECT_EQ(plain->imgBanner->image(), nullptr);
  EXPECT_EQ(plain->imgBannerTopMargin->constant(), 0);
  EXPECT_EQ(plain->imgBannerHeightConstraint->constant(), 0);
  plain->btnUnlock->sendActions(UIControlEvent::touchUpInside);
  EXPECT_NE(plain->presentedViewController(), nullptr);
}

TEST_F(PaywallScreenTest, TheCardTakesItsPlacement) {
  struct Case {
    Position position;
    bool cardTop, cardBottom, cardVertical, splashTop, splashBottom, splashVertical;
  } cases[] = {
      {Position::top, true, false, false, true, false, false},
      {Position::bottom, false, true, false, false, true, false},
      {Position::center, false, false, true, true, false, true},
  };
  for (const auto& c : cases) {
    AnswerNextBidWith(OfferedBid());
    auto paywall = LoadWithCard(c.position);
    EXPECT_EQ(paywall->unlockViewTopConstraint->isActive(), c.cardTop);
    EXPECT_EQ(paywall->unlockViewBottomConstraint->isActive(), c.cardBottom);
    EXPECT_EQ(paywall->unlockViewVerticalConstraint->isActive(), c.cardVertical);
    EXPECT_EQ(paywall->splashViewTopConstraint->isActive(), c.splashTop);
    EXPECT_EQ(paywall->splashViewBottomConstraint->isActive(), c.splashBottom);
    EXPECT_EQ(paywall->splashViewVerticalConstraint->isActive(), c.splashVertical);
  }
}

TEST_F(PaywallScreenTest, DecisionsOverBidRecordsOnScreen) {
  struct Case {
    const char* why;
    json changes;
    bool cardShown;
    bool hidden;
  } cases[] = {
      {"unlocked in normal mode on a first bid still offers the article", {{"unlocked", true}}, true, false},
      {"inactive article", {{"articleActive", false}}, false, true},
  };
  for (const auto& c : cases) {
    json bid = OfferedBid();
    bid.update(c.changes);
    AnswerNextBidWith(bid);
    testing::TransferObserver transfers;
    auto paywall = host_.load();
    ASSERT_TRUE(transfers.waitForHandled(2));  // the bid and the logo
    MainLoop::main().runFor(std::chrono::milliseconds(1));
    EXPECT_EQ(PaywallHost::isCardShown(*paywall), c.cardShown) << c.why;
    EXPECT_EQ(PaywallHost::isHidden(*paywall), c.hidden) << c.why;
  }
}

TEST_F(PaywallScreenTest, CreditRuleHidesTheUnlockButtonBelowThePriceAndOtherwiseLeavesIt) {
  json bid = OfferedBid();
  bid["isCreditAllowed"] = false;
  bid["articlePriceInLocalCurrency"] = 5.0;
  bid["customerBalance"] = 5.0;  // equal: enough to pay
  AnswerNextBidWith(bid);
  auto paywall = LoadWithCard();
  EXPECT_FALSE(paywall->btnUnlock->isHidden());
  EXPECT_EQ(paywall->btnUnlockHeightConstraint->constant(), 45);
  EXPECT_EQ(paywall->btnUnlockBottomMarginConstraint->constant(), 5);

  // A new bid (after a logout elsewhere) with too little money hides it...
  bid["customerBalance"] = 4.99;
  AnswerNextBidWith(bid);
  NotificationCenter::defaultCenter().post("NotificationIdentifier");
  ASSERT_TRUE(host_.waitFor([&] { return paywall->btnUnlock->isHidden(); }));
  EXPECT_EQ(paywall->btnUnlockHeightConstraint->constant(), 0);
  EXPECT_EQ(paywall->btnUnlockBottomMarginConstraint->constant(), 0);

  // ...and one that allows credit leaves the button as it is.
  bid["isCreditAllowed"] = true;
  bid["paywallSettings"]["obTitleText"] = "Credit allowed";
  AnswerNextBidWith(bid);
  NotificationCenter::defaultCenter().post("NotificationIdentifier");
  ASSERT_TRUE(host_.waitFor([&] { return paywall->lblObTitle->text() == "Credit allowed"; }));
  EXPECT_TRUE(paywall->btnUnlock->isHidden());
}

}  // namespace
}  // namespace obolo
