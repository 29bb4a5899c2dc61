// A view that sends actions to targets when the reader acts on it.
//
// Targets are held weakly (see target_action.h). A test fires a tap with
// sendActions(UIControlEvent::touchUpInside), as the platform's programmatic
// call does, or with tap(), which first checks that a reader could tap the
// control at all. Main thread only.

#ifndef OBOLO_TOOLKIT_UI_CONTROL_H_
#define OBOLO_TOOLKIT_UI_CONTROL_H_

#include <memory>

#include "toolkit/target_action.h"
#include "toolkit/ui_view.h"

namespace obolo {

// The platform's raw values; an option set.
enum class UIControlEvent : unsigned {
  touchDown = 1u << 0,
  touchUpInside = 1u << 6,
  touchUpOutside = 1u << 7,
  valueChanged = 1u << 12,
  primaryActionTriggered = 1u << 13,
};

// The union of two sets of events.
constexpr UIControlEvent operator|(UIControlEvent a, UIControlEvent b) {
  return static_cast<UIControlEvent>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

// The platform's raw values. Per-state properties fall back to `normal` for a
// state that has none of its own.
enum class UIControlState : unsigned { normal = 0, highlighted = 1, disabled = 2, selected = 4 };

// The platform's raw values: where a control puts its content across its width.
enum class UIControlContentHorizontalAlignment { center = 0, left = 1, right = 2, fill = 3 };

class UIControl : public UIView {
 public:
  // The constructors of UIView.
  using UIView::UIView;

  // Calls `action` on `target` (held weakly) for `events`, with the control as
  // sender.
  template <class Target, class Method>
  void addTarget(const std::shared_ptr<Target>& target, Method action, UIControlEvent events) {
    actions_.add(target, action, static_cast<unsigned>(events));
  }
  // An action without a target (like the platform's UIAction); the control
  // holds it and whatever it captures.
  void addAction(TargetActionList<UIControl>::Action action, UIControlEvent events) {
    actions_.add(std::move(action), static_cast<unsigned>(events));
  }
  // Removes the target's actions for `events` (every target's when null).
  void removeTarget(const void* target, UIControlEvent events) {
    actions_.remove(target, static_cast<unsigned>(events));
  }

  // Calls the actions registered for any of `events`, with this control as
  // sender, whether or not the control is enabled or visible.
  void sendActions(UIControlEvent events);
  // A reader's tap: sends touchUpInside only when the control is enabled and it
  // and its ancestors are shown and accept interaction. Returns whether it did.
  bool tap();

  // The control's state flags; each change updates state().
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) {
    enabled_ = enabled;
    stateDidChange();
  }
  bool isSelected() const { return selected_; }
  void setSelected(bool selected) {
    selected_ = selected;
    stateDidChange();
  }
  bool isHighlighted() const { return highlighted_; }
  void setHighlighted(bool highlighted) {
    highlighted_ = highlighted;
    stateDidChange();
  }
  // The flags as one state: disabled, else highlighted, else selected, else normal.
  UIControlState state() const;

  // Where the content sits across the control: centred unless set (the
  // consent checkbox keeps its box and text at the left).
  UIControlContentHorizontalAlignment contentHorizontalAlignment() const { return content_alignment_; }
  void setContentHorizontalAlignment(UIControlContentHorizontalAlignment alignment) {
    content_alignment_ = alignment;
    stateDidChange();
  }

 protected:
  // Called after enabled, selected or highlighted changed.
  virtual void stateDidChange() {}

 private:
  TargetActionList<UIControl> actions_;
  bool enabled_ = true;
  bool selected_ = false;
  bool highlighted_ = false;
  UIControlContentHorizontalAlignment content_alignment_ = UIControlContentHorizontalAlignment::center;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_CONTROL_H_
