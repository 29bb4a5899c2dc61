#include "toolkit/ui_pan_gesture_recognizer.h"

#include "toolkit/ui_view.h"

namespace obolo {

CGPoint UIPanGestureRecognizer::translation(const std::shared_ptr<UIView>&) const { return translation_; }

void UIPanGestureRecognizer::setTranslation(CGPoint translation, const std::shared_ptr<UIView>&) {
  translation_ = translation;
}

bool UIPanGestureRecognizer::simulate(UIGestureRecognizerState state, CGPoint delta) {
  if (!isEnabled() || view() == nullptr) return false;
  const CGPoint before = translation_;
  if (state == UIGestureRecognizerState::began) translation_ = CGPoint{};
  translation_.x += delta.x;
  translation_.y += delta.y;
  if (!transition(state)) {
    translation_ = before;
    return false;
  }
  return true;
}

}  // namespace obolo
