// A view that blurs what lies behind it.
//
// Nothing is drawn here; the view records its effect so that screens and tests
// can tell a blur from a plain view. Content goes into contentView().

#ifndef OBOLO_TOOLKIT_UI_VISUAL_EFFECT_VIEW_H_
#define OBOLO_TOOLKIT_UI_VISUAL_EFFECT_VIEW_H_

#include <memory>
#include <optional>

#include "toolkit/ui_view.h"

namespace obolo {

// A blur of what lies behind a view.
class UIBlurEffect {
 public:
  // The platform's raw values.
  enum class Style { extraLight = 0, light = 1, dark = 2, regular = 4, prominent = 5 };

  // A blur of the given style.
  explicit UIBlurEffect(Style style) : style_(style) {}
  Style style() const { return style_; }
  friend bool operator==(const UIBlurEffect&, const UIBlurEffect&) = default;

 private:
  Style style_;
};

class UIVisualEffectView : public UIView {
 public:
  // A view that blurs what lies behind it with `effect`; none blurs nothing.
  explicit UIVisualEffectView(std::optional<UIBlurEffect> effect) : effect_(effect) {}

  // The blur; changing it changes the view's look at once.
  const std::optional<UIBlurEffect>& effect() const { return effect_; }
  void setEffect(std::optional<UIBlurEffect> effect) { effect_ = effect; }
  // Created on first use as a subview that fills this view and follows its size.
  std::shared_ptr<UIView> contentView();

 private:
  std::optional<UIBlurEffect> effect_;
  std::shared_ptr<UIView> content_view_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_VISUAL_EFFECT_VIEW_H_
