// The base of gesture recognisers: a state, the view it is attached to, and
// target–actions fired when the state changes.
//
// The view owns its recognisers; a recogniser refers to its view weakly and to
// its targets weakly. Main thread only. Concrete recognisers (pan) add what
// they measure and a way for tests to drive them.

#ifndef OBOLO_TOOLKIT_UI_GESTURE_RECOGNIZER_H_
#define OBOLO_TOOLKIT_UI_GESTURE_RECOGNIZER_H_

#include <memory>
#include <utility>

#include "toolkit/ns_object.h"
#include "toolkit/target_action.h"

namespace obolo {

class UIView;

// Where a gesture is (the platform's raw values).
enum class UIGestureRecognizerState {
  possible = 0,
  began = 1,
  changed = 2,
  ended = 3,
  cancelled = 4,
  failed = 5
};

class UIGestureRecognizer : public NSObject {
 public:
  // A recogniser with no targets yet.
  UIGestureRecognizer() = default;
  // Registers `action` of `target` (held weakly), as the platform's initialiser
  // with a target does.
  template <class Target, class Method>
  UIGestureRecognizer(const std::shared_ptr<Target>& target, Method action) {
    addTarget(target, action);
  }

  // Adds `action` of `target` (held weakly), fired on every change of state.
  template <class Target, class Method>
  void addTarget(const std::shared_ptr<Target>& target, Method action) {
    actions_.add(target, action, kAllEvents);
  }
  // An action without a target, for code that cannot add a member function to
  // the object it acts for (the floating button's controller, say). The
  // recogniser holds it and whatever it captures: capture the owner weakly.
  void addAction(TargetActionList<UIGestureRecognizer>::Action action) {
    actions_.add(std::move(action), kAllEvents);
  }
  // Drops the actions of `target`.
  void removeTarget(const void* target) { actions_.remove(target, kAllEvents); }

  // The view it is attached to (null when none), its state, and whether it
  // recognises at all.
  std::shared_ptr<UIView> view() const { return view_.lock(); }
  UIGestureRecognizerState state() const { return state_; }
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) { enabled_ = enabled; }

 protected:
  // Sets the state and calls every live target's action with this recogniser
  // as sender. Does nothing when disabled or not attached to a view.
  bool transition(UIGestureRecognizerState state);

 private:
  friend class UIView;
  static constexpr unsigned kAllEvents = ~0u;

  std::weak_ptr<UIView> view_;
  UIGestureRecognizerState state_ = UIGestureRecognizerState::possible;
  bool enabled_ = true;
  TargetActionList<UIGestureRecognizer> actions_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_GESTURE_RECOGNIZER_H_
