#include "toolkit/ui_gesture_recognizer.h"

#include "toolkit/ui_view.h"

namespace obolo {

bool UIGestureRecognizer::transition(UIGestureRecognizerState state) {
  if (!enabled_ || view_.expired()) return false;
  state_ = state;
  actions_.send(selfAs(this), kAllEvents);
  return true;
}

}  // namespace obolo
