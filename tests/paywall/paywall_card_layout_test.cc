// Where the card's views land: the card's constraints and their constants at
// work on the real screen, over the sandbox.

#include <gtest/gtest.h>

#include <string>

#include "sandbox/default_world.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

namespace seed = sandbox::seed;
using testing::PaywallHost;

// A frame in the paywall root's coordinates (the card's subviews' frames are
// in the card's).
CGRect InRoot(const PaywallVC& paywall, const UIView& view) {
  CGRect frame = view.frame();
  if (view.superview() != paywall.viewIfLoaded()) {
    frame.origin.x += paywall.unlockView->frame().minX();
    frame.origin.y += paywall.unlockView->frame().minY();
  }
  return frame;
}

class PaywallCardLayoutTest : public ::testing::Test {
 protected:
  // The article's view below a masthead on a common phone: the card fits
  // with its banner.
  std::shared_ptr<PaywallVC> LoadWithCard(Position position = Position::center) {
    host_.content->setFrame(CGRect(0, 100, 390, 744));
    auto paywall = host_.load(position);
    EXPECT_TRUE(host_.waitFor([&] { return PaywallHost::isCardShown(*paywall) && paywall->lblObTitle->text(); }));
    paywall->view()->layoutIfNeeded();
    return paywall;
  }

  testing::TemporaryStore store_;
  PaywallHost host_{seed::kNormalArticleUrl};
};

TEST_F(PaywallCardLayoutTest, ThePlacementPutsTheCardAndTheSplashAtTheTopCentreOrBottom) {
  const CGFloat height = 744;  // the content view LoadWithCard lays the paywall over
  for (const Position position : {Position::top, Position::center, Position::bottom}) {
    auto paywall = LoadWithCard(position);
    for (const auto& panel : {paywall->unlockView, paywall->splashView}) {
      const CGRect frame = panel->frame();
      EXPECT_EQ(frame.minX(), 16);
      EXPECT_EQ(frame.width(), host_.content->bounds().width() - 32);
      switch (position) {
        case Position::top:
          EXPECT_EQ(frame.minY(), 16);
          break;
        case Position::center:
          EXPECT_NEAR(frame.midY(), height / 2, 0.5) << "the splash's vertical constraint wins over its top one";
          break;
        case Position::bottom:
          EXPECT_EQ(frame.maxY(), height - 16);
          break;
      }
    }
  }
}

TEST_F(PaywallCardLayoutTest, ConstantsSetToZeroCloseTheGapsTheyLeave) {
  auto paywall = LoadWithCard();
  const CGRect card = paywall->unlockView->frame();
  const CGFloat checkbox = InRoot(*paywall, *paywall->btnAgreement).minY();
  const CGFloat links = InRoot(*paywall, *paywall->btnConsent[1]).minY();
  const CGFloat logo = InRoot(*paywall, *paywall->imgPublisherLogo).minY();

  paywall->isUnlockButton(true);  // insufficient funds
  paywall->view()->layoutIfNeeded();
  EXPECT_EQ(paywall->btnUnlock->frame().height(), 0);
  EXPECT_EQ(paywall->unlockView->frame().height(), card.height() - 50) << "the button's 45 and its 5 below";
  EXPECT_EQ(InRoot(*paywall, *paywall->btnAgreement).minY(), checkbox - 25) << "centred: half the change above";

  paywall->btnAgreementBottomConstraint->setConstant(0);
  paywall->view()->layoutIfNeeded();
  EXPECT_EQ(paywall->unlockView->frame().height(), card.height() - 70);
  EXPECT_EQ(InRoot(*paywall, *paywall->btnConsent[1]).minY(), links - 70 + 35);

  paywall->imgBannerTopMargin->setConstant(0);
  paywall->imgBannerHeightConstraint->setConstant(0);  // the banner switched off
  paywall->view()->layoutIfNeeded();
  EXPECT_EQ(paywall->imgBanner->frame().height(), 0);
  EXPECT_EQ(paywall->unlockView->frame().height(), card.height() - 70 - 194);
  EXPECT_EQ(InRoot(*paywall, *paywall->imgPublisherLogo).minY(), logo - 194 + (70 + 194) / 2);
}

TEST_F(PaywallCardLayoutTest, LongerTextsWrapAndGrowTheCardUpToItsLineLimit) {
  auto paywall = LoadWithCard();
  paywall->lblObPromt->setText("Unlock this article.");
  paywall->view()->layoutIfNeeded();
  const CGFloat oneLine = paywall->lblObPromt->frame().height();
  const CGFloat card = paywall->unlockView->frame().height();

  std::string longer;
  for (int i = 0; i < 3; ++i) longer += "Unlock this article from The Example Times for a small sum, once. ";
  paywall->lblObPromt->setText(longer);
  paywall->view()->layoutIfNeeded();
  EXPECT_GE(paywall->lblObPromt->frame().height(), 3 * oneLine);
  EXPECT_EQ(paywall->unlockView->frame().height(), card + paywall->lblObPromt->frame().height() - oneLine);

  paywall->lblObPromt->setText(longer + longer + longer);
  paywall->view()->layoutIfNeeded();
  EXPECT_LE(paywall->lblObPromt->frame().height(), 5 * oneLine + 1) << "at most five lines";
}

TEST_F(PaywallCardLayoutTest, AnotherScreenSizeLaysTheCardOutAgainWithinIt) {
  auto paywall = LoadWithCard();
  struct Case {
    const char* what;
    CGSize content;
    CGFloat cardWidth;
  } cases[] = {
      {"a small phone", {375, 564}, 343},
      {"a tablet", {768, 921}, 440},
      {"a tablet on its side", {1024, 665}, 440},
  };
  for (const Case& c : cases) {
    host_.content->setFrame(CGRect({0, 100}, c.content));  // the paywall's root follows its content view
    paywall->view()->layoutIfNeeded();
    const CGRect card = paywall->unlockView->frame();
    EXPECT_EQ(card.width(), c.cardWidth) << c.what;
    EXPECT_NEAR(card.midX(), c.content.width / 2, 0.5) << c.what;
    EXPECT_LE(card.height(), c.content.height - 32) << c.what << ": the card stays within the screen";
    EXPECT_GE(card.minY(), 16) << c.what;
    const CGRect links = InRoot(*paywall, *paywall->btnConsent[1]);
    EXPECT_LE(links.maxY(), card.maxY()) << c.what << ": nothing leaves the card";
  }
  host_.content->setFrame(CGRect(0, 100, 375, 500));  // shorter than the card
  paywall->view()->layoutIfNeeded();
  EXPECT_EQ(paywall->unlockView->frame().height(), 500 - 32);
  EXPECT_LT(paywall->imgBanner->frame().height(), 174) << "the banner gave way first";
  EXPECT_EQ(paywall->lblObTitle->frame().height(), paywall->lblObTitle->intrinsicContentSizeForWidth(
                                                       paywall->lblObTitle->frame().width())
                                                       .height)
      << "the title kept its room";
}

}  // namespace
}  // namespace obolo
