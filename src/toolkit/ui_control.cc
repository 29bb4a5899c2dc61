#include "toolkit/ui_control.h"

namespace obolo {

void UIControl::sendActions(UIControlEvent events) {
  actions_.send(selfAs(this), static_cast<unsigned>(events));
}

bool UIControl::tap() {
  if (!enabled_ || !isShownInHierarchy()) return false;
  for (auto view = selfAs<UIView>(this); view; view = view->superview()) {
    if (!view->isUserInteractionEnabled()) return false;
  }
  sendActions(UIControlEvent::touchUpInside);
  return true;
}

UIControlState UIControl::state() const {
  if (!enabled_) return UIControlState::disabled;
  if (highlighted_) return UIControlState::highlighted;
  if (selected_) return UIControlState::selected;
  return UIControlState::normal;
}

}  // namespace obolo
