#include "toolkit/ui_activity_indicator_view.h"

namespace obolo {

void UIActivityIndicatorView::startAnimating() {
  animating_ = true;
  if (hides_when_stopped_) setHidden(false);
}

void UIActivityIndicatorView::stopAnimating() {
  animating_ = false;
  if (hides_when_stopped_) setHidden(true);
}

void UIActivityIndicatorView::setHidesWhenStopped(bool hides) {
  hides_when_stopped_ = hides;
  if (hides && !animating_) setHidden(true);
}

CGSize UIActivityIndicatorView::intrinsicContentSize() const {
  const bool large = style_ == Style::large || style_ == Style::whiteLarge;
  return large ? CGSize{37, 37} : CGSize{20, 20};
}

}  // namespace obolo
