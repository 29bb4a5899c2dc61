// Placing the paywall into the host's screen, in both forms.

#include <gtest/gtest.h>

#include "sandbox/default_world.h"
#include "support/log_capture.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "toolkit/ui_navigation_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

class LoadPaywallTest : public ::testing::Test {
 protected:
  testing::TemporaryStore store_;
  testing::PaywallHost host_{sandbox::seed::kNormalArticleUrl};
};

TEST_F(LoadPaywallTest, OverTheWholeScreenWithoutANavigationBar) {
  testing::LogCapture log;
  auto paywall = host_.loadFullScreen();
  ASSERT_NE(paywall, nullptr);
  EXPECT_EQ(log.lines().at(0), "0");
  EXPECT_EQ(paywall->view()->frame(), (CGRect{{0, 0}, host_.host->view()->bounds().size}));
  EXPECT_EQ(paywall->view()->superview(), host_.host->view());
  EXPECT_EQ(paywall->parent(), host_.host);
  EXPECT_EQ(paywall->viewController.lock(), host_.host);
  EXPECT_FALSE(paywall->isCustom);
}

TEST_F(LoadPaywallTest, OverAContentViewWithItsPlacement) {
  auto paywall = host_.load(Position::bottom);
  ASSERT_NE(paywall, nullptr);
  EXPECT_EQ(paywall->view()->frame(), host_.content->bounds());
  EXPECT_EQ(paywall->view()->superview(), host_.content);
  EXPECT_EQ(paywall->parent(), host_.host);
  EXPECT_TRUE(paywall->isCustom);
  EXPECT_EQ(paywall->position, Position::bottom);
  EXPECT_EQ(paywall->contentView, host_.content);
  // Handed over before the view loaded: the view's load hid the paywall's own
  // blur, and the content's blur lies over the content.
  EXPECT_TRUE(paywall->effectView->isHidden());
  EXPECT_EQ(paywall->visualEffectView->superview(), host_.content);
}

TEST_F(LoadPaywallTest, InsideANavigationControllerWritesTheBarHeight) {
  auto navigation = UINavigationController::withRootViewController(host_.host);
  testing::LogCapture log;
  host_.loadFullScreen();
  EXPECT_EQ(log.lines().at(0), "44.0");
}

TEST_F(LoadPaywallTest, EveryCallAddsAnotherPaywall) {
  auto first = host_.load();
  auto second = host_.load();
  EXPECT_NE(first, second);
  EXPECT_EQ(host_.host->children().size(), 2u);
  EXPECT_EQ(second->view()->superview(), host_.content);
}

}  // namespace
}  // namespace obolo
