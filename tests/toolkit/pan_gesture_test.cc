#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "toolkit/ui_button.h"
#include "toolkit/ui_pan_gesture_recognizer.h"

namespace obolo {
namespace {

// Drags a view as the floating wallet button does: each callback applies the
// movement since the previous one, then resets the translation.
struct Dragger : NSObject {
  std::shared_ptr<UIView> container;
  std::shared_ptr<UIView> dragged;
  std::vector<UIGestureRecognizerState> states;

  void panDidFire(const std::shared_ptr<UIPanGestureRecognizer>& panner) {
    const CGPoint t = panner->translation(container);
    panner->setTranslation(CGPoint{0, 0}, container);
    const CGPoint c = dragged->center();
    dragged->setCenter(CGPoint{c.x + t.x, c.y + t.y});
    states.push_back(panner->state());
  }
};

TEST(UIPanGestureRecognizerTest, EachCallbackReadsTheMovementSinceTheLastReset) {
  auto dragger = std::make_shared<Dragger>();
  dragger->container = std::make_shared<UIView>(CGRect(0, 0, 390, 844));
  dragger->dragged = std::make_shared<UIButton>(CGRect(0, 0, 40, 40));
  dragger->container->addSubview(dragger->dragged);
  auto pan = std::make_shared<UIPanGestureRecognizer>(dragger, &Dragger::panDidFire);
  EXPECT_FALSE(pan->simulate(UIGestureRecognizerState::began, CGPoint{1, 1})) << "not on a view";
  dragger->dragged->addGestureRecognizer(pan);

  EXPECT_TRUE(pan->simulate(UIGestureRecognizerState::began, CGPoint{5, 5}));
  pan->simulate(UIGestureRecognizerState::changed, CGPoint{10, 0});
  pan->simulate(UIGestureRecognizerState::changed, CGPoint{0, 20});
  pan->simulate(UIGestureRecognizerState::ended, CGPoint{1, 1});
  // Without the reset the moves would add up to (5,5)+(15,5)+(15,25)+(16,26).
  EXPECT_EQ(dragger->dragged->center(), (CGPoint{20 + 16, 20 + 26}));
  EXPECT_EQ(dragger->states, (std::vector<UIGestureRecognizerState>{
                                 UIGestureRecognizerState::began, UIGestureRecognizerState::changed,
                                 UIGestureRecognizerState::changed, UIGestureRecognizerState::ended}));

  pan->setEnabled(false);
  EXPECT_FALSE(pan->simulate(UIGestureRecognizerState::began, CGPoint{1, 1}));
  EXPECT_EQ(dragger->states.size(), 4u);
}

TEST(UIPanGestureRecognizerTest, NeitherItsTargetNorItsViewIsKeptAlive) {
  auto view = std::make_shared<UIView>();
  auto dragger = std::make_shared<Dragger>();
  std::weak_ptr<Dragger> watch = dragger;
  auto pan = std::make_shared<UIPanGestureRecognizer>(dragger, &Dragger::panDidFire);
  view->addGestureRecognizer(pan);
  dragger.reset();
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(pan->simulate(UIGestureRecognizerState::began, CGPoint{1, 1}));
  view.reset();
  EXPECT_EQ(pan->view(), nullptr);
}

}  // namespace
}  // namespace obolo
