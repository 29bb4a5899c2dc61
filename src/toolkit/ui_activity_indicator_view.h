// A spinner shown while something loads.
//
// As on the platform, it hides itself while stopped (hidesWhenStopped, on by
// default) and shows itself when it starts.

#ifndef OBOLO_TOOLKIT_UI_ACTIVITY_INDICATOR_VIEW_H_
#define OBOLO_TOOLKIT_UI_ACTIVITY_INDICATOR_VIEW_H_

#include "toolkit/ui_view.h"

namespace obolo {

class UIActivityIndicatorView : public UIView {
 public:
  // The platform's raw values.
  enum class Style { whiteLarge = 0, white = 1, gray = 2, medium = 100, large = 101 };

  // A stopped indicator, hidden as the platform hides a stopped one.
  explicit UIActivityIndicatorView(Style style = Style::medium) : style_(style) { setHidden(true); }

  Style style() const { return style_; }  // as made

  // Starting shows the indicator; stopping hides it when hidesWhenStopped()
  // (the default).
  void startAnimating();
  void stopAnimating();
  bool isAnimating() const { return animating_; }
  bool hidesWhenStopped() const { return hides_when_stopped_; }
  void setHidesWhenStopped(bool hides);

  // The spinner's diameter: 37 points for the large styles, 20 otherwise.
  CGSize intrinsicContentSize() const override;

 private:
  Style style_;
  bool animating_ = false;
  bool hides_when_stopped_ = true;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_ACTIVITY_INDICATOR_VIEW_H_
