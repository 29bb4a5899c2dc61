#include "wallet/floating_button.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/ui_pan_gesture_recognizer.h"
#include "toolkit/ui_screen.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;
using Sockets = std::array<CGPoint, 6>;

class FloatingButtonTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    UIScreen::main().setBounds(CGRect(0, 0, 390, 844));
    host = std::make_shared<UIViewController>();
  }

  std::shared_ptr<UIPanGestureRecognizer> Panner(const UIButton& button) {
    for (const auto& recognizer : button.gestureRecognizers()) {
      if (auto pan = std::dynamic_pointer_cast<UIPanGestureRecognizer>(recognizer)) return pan;
    }
    return nullptr;
  }

  std::shared_ptr<UIViewController> host;
};

// --- Where it rests ----------------------------------------------------------

TEST_F(FloatingButtonTest, SocketsFollowTheViewAndTheButtonSize) {
  // A phone-sized view and the 40 x 40 button: R = (24, 24)-(366, 820).
  addFloatingButton(*host, 5);
  EXPECT_EQ(FloatingButtonSockets(*host),
            (Sockets{{{39, 74}, {39, 770}, {351, 74}, {39, 410}, {351, 410}, {351, 770}}}));

  // The controller's own view counts, not the screen: R = (24, 24)-(276, 576).
  host->view()->setBounds(CGRect(0, 0, 300, 600));
  EXPECT_EQ(FloatingButtonSockets(*host),
            (Sockets{{{39, 74}, {39, 526}, {261, 74}, {39, 288}, {261, 288}, {261, 526}}}));
}

TEST_F(FloatingButtonTest, StartsOffTheScreensCornerAndRestsOnTheNearestSocket) {
  struct Row {
    CGRect screen;
    CGPoint rest;
  };
  // The view stays 390 x 844; only the screen the start is taken from changes.
  // The button starts centred at (width + 5, height + 5).
  const std::vector<Row> rows = {
      {CGRect(0, 0, 390, 844), {351, 770}},  // from (395, 849): bottom right
      {CGRect(0, 0, 390, 300), {351, 410}},  // from (395, 305): right middle
      {CGRect(0, 0, 100, 844), {39, 770}},   // from (105, 849): bottom left
      {CGRect(0, 0, 10, 10), {39, 74}},      // from (15, 15): top left
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.screen);
    auto controller = std::make_shared<UIViewController>();
    controller->view()->setFrame(CGRect(0, 0, 390, 844));
    UIScreen::main().setBounds(row.screen);
    addFloatingButton(*controller, 5);
    auto button = floatingButton(*controller);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->center(), row.rest);
  }
}

// --- Dragging ----------------------------------------------------------------

TEST_F(FloatingButtonTest, ADragMovesByEachIncrementAndGlidesToASocketWhenLetGo) {
  for (auto end : {UIGestureRecognizerState::ended, UIGestureRecognizerState::cancelled}) {
    SCOPED_TRACE(static_cast<int>(end));
    auto controller = std::make_shared<UIViewController>();
    addFloatingButton(*controller, 0);
    MainLoop::main().advance(1ms);
    auto button = floatingButton(*controller);
    auto pan = Panner(*button);
    ASSERT_NE(pan, nullptr);
    ASSERT_EQ(button->center(), (CGPoint{351, 770}));

    pan->simulate(UIGestureRecognizerState::began, CGPoint{-10, -20});
    EXPECT_EQ(button->center(), (CGPoint{341, 750}));
    pan->simulate(UIGestureRecognizerState::changed, CGPoint{-100, 0});
    EXPECT_EQ(button->center(), (CGPoint{241, 750})) << "only the movement since the last call";
    pan->simulate(UIGestureRecognizerState::changed, CGPoint{-1000, -1000});
    EXPECT_EQ(button->center(), (CGPoint{-759, -250})) << "nothing holds it on screen while dragged";

    pan->simulate(end, CGPoint{0, 0});
    EXPECT_EQ(button->center(), (CGPoint{39, 74})) << "the nearest socket: left top";
    EXPECT_EQ(UIView::lastAnimationDuration(), 0.3);
  }
}

// Let go exactly between two sockets, the button rests on the one listed
// first (left top, left bottom, right top, left middle, right middle, right
// bottom).
TEST_F(FloatingButtonTest, LetGoHalfwayBetweenTwoSocketsRestsOnTheOneListedFirst) {
  struct Row {
    CGPoint letGo;
    CGPoint rest;
  };
  const std::vector<Row> rows = {
      {{39, 242}, {39, 74}},     // left top and left middle
      {{39, 590}, {39, 770}},    // left middle and left bottom: left bottom is listed first
      {{195, 74}, {39, 74}},     // left top and right top
      {{351, 590}, {351, 410}},  // right middle and right bottom
      {{195, 770}, {39, 770}},   // left bottom and right bottom
  };
  addFloatingButton(*host, 0);
  auto button = floatingButton(*host);
  auto pan = Panner(*button);
  ASSERT_NE(pan, nullptr);
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.letGo);
    const CGPoint from = button->center();
    pan->simulate(UIGestureRecognizerState::began, CGPoint{row.letGo.x - from.x, row.letGo.y - from.y});
    ASSERT_EQ(button->center(), row.letGo);
    pan->simulate(UIGestureRecognizerState::ended);
    EXPECT_EQ(button->center(), row.rest);
  }
}

// --- Showing and removing ----------------------------------------------------

TEST_F(FloatingButtonTest, ShowsOnlyWhenTheDelayHasPassed) {
  struct Row {
    std::int64_t after;
    MainLoop::Seconds notYet;
    MainLoop::Seconds shown;
  };
  // A delay of 0 or less is the platform's shortest timer, 0.1 ms.
  const std::vector<Row> rows = {{5, 4.999s, 5s}, {1, 0.99s, 1s}, {0, 0s, 1ms}, {-3, 0s, 1ms}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.after);
    auto controller = std::make_shared<UIViewController>();
    addFloatingButton(*controller, row.after);
    auto button = floatingButton(*controller);
    MainLoop::main().advance(row.notYet);
    EXPECT_EQ(button->superview(), nullptr);
    MainLoop::main().advance(row.shown - row.notYet);
    EXPECT_EQ(button->superview(), controller->view());
    EXPECT_EQ(button->center(), (CGPoint{351, 770})) << "already resting when it appears";
  }
}

// Removing takes the button off screen but keeps it attached. A timer shows
// the button attached when it fires, not the one it was set for: removed
// before its delay, a button still shows; replaced, it never does. A button
// already shown stays beside its replacement.
TEST_F(FloatingButtonTest, RemovingAndAddingAgainActOnTheAttachedButton) {
  addFloatingButton(*host, 0);
  MainLoop::main().advance(1ms);
  auto first = floatingButton(*host);
  ASSERT_EQ(first->superview(), host->view());
  removeFloatingButton(*host);
  EXPECT_EQ(first->superview(), nullptr);
  EXPECT_EQ(floatingButton(*host), first);

  addFloatingButton(*host, 5);
  auto replaced = floatingButton(*host);
  addFloatingButton(*host, 10);
  auto shown = floatingButton(*host);
  removeFloatingButton(*host);
  MainLoop::main().advance(5s);
  EXPECT_EQ(replaced->superview(), nullptr);
  EXPECT_EQ(shown->superview(), host->view());

  addFloatingButton(*host, 0);
  MainLoop::main().advance(1ms);
  EXPECT_EQ(shown->superview(), host->view()) << "the earlier button is not taken off screen";
  EXPECT_EQ(floatingButton(*host)->superview(), host->view());
}

TEST_F(FloatingButtonTest, TheTimerHoldsTheControllerOnlyUntilItFires) {
  std::weak_ptr<UIViewController> watch = host;
  addFloatingButton(*host, 5);
  auto button = floatingButton(*host);
  host.reset();
  ASSERT_FALSE(watch.expired()) << "the pending timer keeps the controller";
  MainLoop::main().advance(5s);
  // The button (through its tap and drag targets) must not keep it alive.
  EXPECT_TRUE(watch.expired());
  // A drag of an orphaned button does nothing.
  auto pan = Panner(*button);
  ASSERT_NE(pan, nullptr);
  const CGPoint before = button->center();
  pan->simulate(UIGestureRecognizerState::began, CGPoint{10, 10});
  EXPECT_EQ(button->center(), before);
}

// --- Look --------------------------------------------------------------------

TEST_F(FloatingButtonTest, LooksLikeTheKitsRoundBlueWalletButton) {
  addFloatingButton(*host, 0);
  auto button = floatingButton(*host);
  ASSERT_NE(button, nullptr);
  EXPECT_EQ(button->bounds().size, (CGSize{40, 40}));
  auto image = button->image(UIControlState::normal);
  ASSERT_NE(image, nullptr) << "the wallet icon from the kit's bundle";
  EXPECT_EQ(image->name(), "wallet-icon");
  EXPECT_EQ(button->backgroundColor(), (UIColor{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1.0}));
  EXPECT_EQ(button->layer().cornerRadius(), 20.0) << "a full circle";
  EXPECT_FLOAT_EQ(button->layer().shadowOpacity(), 0.12f);
}

}  // namespace
}  // namespace obolo
