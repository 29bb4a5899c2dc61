#include "ui/view_helpers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "support/log_capture.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

TEST(AddShadowTest, SetsTheCardsShadowAndCornersButNotClipping) {
  UIView view;
  view.layer().setMasksToBounds(true);
  addShadow(view);
  const CALayer& layer = view.layer();
  EXPECT_EQ(layer.shadowColor(), UIColor::withWhite(2.0 / 3.0, 1));
  EXPECT_EQ(layer.shadowOpacity(), 1.0f);
  EXPECT_EQ(layer.shadowOffset(), (CGSize{0, 0}));
  EXPECT_EQ(layer.shadowRadius(), 5.0);
  EXPECT_EQ(layer.cornerRadius(), 40.0);
  EXPECT_TRUE(layer.masksToBounds());
}

TEST(ShowHideTest, ShowAndHideToggleTheHiddenState) {
  UIView view;
  hide(view);
  EXPECT_TRUE(view.isHidden());
  show(view);
  EXPECT_FALSE(view.isHidden());
}

class ShowForTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }
  testing::LogCapture log;
};

TEST_F(ShowForTest, ShowsNowAndHidesWhenItsTimerFiresLoggingTheInterval) {
  auto view = std::make_shared<UIView>();
  view->setHidden(true);
  show(view, 5);
  EXPECT_FALSE(view->isHidden());
  MainLoop::main().advance(4.9s);
  EXPECT_FALSE(view->isHidden());
  EXPECT_TRUE(log.lines().empty());
  MainLoop::main().advance(0.1s);
  EXPECT_TRUE(view->isHidden());
  EXPECT_EQ(log.lines(), std::vector<std::string>{"5.0"});
}

TEST_F(ShowForTest, ZeroSecondsHidesAlmostAtOnce) {
  auto view = std::make_shared<UIView>();
  show(view, 0);
  show(view, -2);
  EXPECT_FALSE(view->isHidden());
  MainLoop::main().advance(1ms);
  EXPECT_TRUE(view->isHidden());
  // The platform's shortest timer, 0.1 ms, in the kit's number format.
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"0.0001", "0.0001"}));
}

TEST_F(ShowForTest, TheTimerKeepsTheViewAliveUntilItFires) {
  auto view = std::make_shared<UIView>();
  std::weak_ptr<UIView> watch = view;
  show(view, 5);
  view.reset();
  EXPECT_FALSE(watch.expired());
  MainLoop::main().advance(5s);
  EXPECT_TRUE(watch.expired());
}

TEST_F(ShowForTest, ASecondCallAddsASecondTimer) {
  auto view = std::make_shared<UIView>();
  show(view, 5);
  MainLoop::main().advance(3s);
  show(view, 5);  // shown again; the first timer still hides it at 5 s
  MainLoop::main().advance(2s);
  EXPECT_TRUE(view->isHidden());
  view->setHidden(false);
  MainLoop::main().advance(3s);
  EXPECT_TRUE(view->isHidden());
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"5.0", "5.0"}));
}

// The seconds are a 64-bit count: a count past 32 bits is not cut down to a
// short one, and one past any clock is a timer that does not fire.
TEST_F(ShowForTest, SecondsBeyondThirtyTwoBitsKeepTheViewShown) {
  const std::int64_t counts[] = {(std::int64_t{1} << 32) + 5, std::int64_t{5} << 40,
                                 std::numeric_limits<std::int64_t>::max()};
  std::vector<std::shared_ptr<UIView>> views;
  for (std::int64_t seconds : counts) {
    views.push_back(std::make_shared<UIView>());
    show(views.back(), seconds);
  }
  MainLoop::main().advance(std::chrono::hours(24 * 365));
  for (const auto& view : views) EXPECT_FALSE(view->isHidden());
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(MainLoop::main().pendingTimerCount(), 3u);
}

}  // namespace
}  // namespace obolo
