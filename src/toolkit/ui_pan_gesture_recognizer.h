// A pan (drag) recogniser: reports how far the finger moved since the
// translation was last reset.
//
// The toolkit has no touches: a test drives the gesture with simulate(), which
// adds a movement to the translation, sets the state and fires the actions.
// Views have no transforms, so a translation reads the same in every view; the
// view arguments exist to keep screen code in the platform's words.

#ifndef OBOLO_TOOLKIT_UI_PAN_GESTURE_RECOGNIZER_H_
#define OBOLO_TOOLKIT_UI_PAN_GESTURE_RECOGNIZER_H_

#include <memory>

#include "toolkit/geometry.h"
#include "toolkit/ui_gesture_recognizer.h"

namespace obolo {

class UIPanGestureRecognizer : public UIGestureRecognizer {
 public:
  // The constructors of UIGestureRecognizer.
  using UIGestureRecognizer::UIGestureRecognizer;

  // The movement since the gesture began or since the last setTranslation.
  CGPoint translation(const std::shared_ptr<UIView>& in_view) const;
  void setTranslation(CGPoint translation, const std::shared_ptr<UIView>& in_view);

  // Test drive: a new gesture (state began) starts from a zero translation;
  // `delta` is added to the translation, the state becomes `state` and the
  // actions fire. Returns false (and changes nothing) when the recogniser is
  // disabled or not attached to a view.
  bool simulate(UIGestureRecognizerState state, CGPoint delta = {});

 private:
  CGPoint translation_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_PAN_GESTURE_RECOGNIZER_H_
