// Placing the paywall into the host's screen, in both forms.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/default_world.h"
#include "support/log_capture.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "toolkit/text_layout.h"
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

// Every text the kit measures, in order, passed on to the real service.
class MeasuredTexts final : public TextLayoutService {
 public:
  TextLayout layout(std::string_view text, const TextStyle& style, CGFloat width) override {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      measured_.emplace_back(std::string(text), style.font);
    }
    return inner_->layout(text, style, width);
  }
  std::string error() override { return inner_->error(); }

  std::vector<std::pair<std::string, UIFont>> measured() {
    std::lock_guard<std::mutex> lock(mutex_);
    return measured_;
  }

 private:
  const std::shared_ptr<TextLayoutService> inner_ = TextLayoutService::shared();
  std::mutex mutex_;
  std::vector<std::pair<std::string, UIFont>> measured_;
};

// The first card of a process would otherwise load each face and size its
// labels use in its first layout pass, after the answer came: a few
// milliseconds a reader waits on a cold start.
TEST_F(LoadPaywallTest, TheFirstCardOfAProcessFindsEveryFaceItUsesLoadedWhileTheBidTravels) {
  auto texts = std::make_shared<MeasuredTexts>();
  TextLayoutService::setShared(texts);
  auto paywall = host_.load();
  ASSERT_TRUE(host_.waitFor([&] { return testing::PaywallHost::isCardShown(*paywall); }));
  host_.window->layoutIfNeeded();
  TextLayoutService::setShared(nullptr);

  // The warm-up measures "Ag" in each face; the card's own texts come after.
  const auto measured = texts->measured();
  const auto card_start = std::find_if(measured.begin(), measured.end(),
                                       [](const auto& text) { return text.first != "Ag"; });
  ASSERT_NE(card_start, measured.begin()) << "nothing was measured before the card";
  ASSERT_NE(card_start, measured.end()) << "the card measured no text";
  std::vector<UIFont> warmed;
  for (auto it = measured.begin(); it != card_start; ++it) warmed.push_back(it->second);
  for (auto it = card_start; it != measured.end(); ++it) {
    EXPECT_NE(std::find(warmed.begin(), warmed.end(), it->second), warmed.end())
        << "\"" << it->first << "\" in a face of size " << it->second.pointSize() << " was not warmed";
  }
}

}  // namespace
}  // namespace obolo
