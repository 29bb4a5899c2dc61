// A rectangle on screen and the root of the view tree.
//
// A view owns its subviews (strongly, in order from back to front) and refers
// to its superview weakly, so dropping a tree's root releases the whole tree.
// Geometry follows the platform without transforms: `center` is the middle of
// `frame` in the superview's coordinates, `bounds` is the view's own
// coordinate space, origin (0, 0) unless set, of the frame's size. Setting any
// of them updates the others. When a view's size changes, its subviews follow
// according to their autoresizing masks.
//
// Layout. A view whose translatesAutoresizingMaskIntoConstraints is false is
// placed by constraints (layout_constraint.h) instead of by its frame and
// mask: the layout pass sets its frame. The pass runs in the platform's rhythm:
// a change that can move views (a view's size, a subview added or removed, a
// constraint's constant, priority or activation, an intrinsic size such as a
// label's text, a hidden state) only marks the layout as needed; the pass runs
// once, at the end of the main loop's turn (before the loop waits or returns to
// its caller), or at once on layoutIfNeeded(). Tests read frames after
// layoutIfNeeded() or after a turn of the loop.
//
// One pass solves the constraints of a layout scope: a view placed by frame
// (or a tree's root) together with all its descendants placed by constraints,
// reached through views placed by constraints. Frames are rounded to whole
// points. See layout_engine.h for how constraints and intrinsic sizes combine.
//
// Main thread only. Views live in std::shared_ptr (see NSObject).

#ifndef OBOLO_TOOLKIT_UI_VIEW_H_
#define OBOLO_TOOLKIT_UI_VIEW_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/autoresizing_mask.h"
#include "toolkit/ca_layer.h"
#include "toolkit/geometry.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/ns_object.h"
#include "toolkit/ui_color.h"

namespace obolo {

class NSLayoutConstraint;
class UIGestureRecognizer;
class UIWindow;

// The platform's raw values: how a view's content fills its bounds.
enum class UIViewContentMode {
  scaleToFill = 0,
  scaleAspectFit = 1,
  scaleAspectFill = 2,
  redraw = 3,
  center = 4,
  top = 5,
  bottom = 6,
  left = 7,
  right = 8,
  topLeft = 9,
  topRight = 10,
  bottomLeft = 11,
  bottomRight = 12,
};

// The direction a hugging or compression priority applies in.
enum class UILayoutConstraintAxis { horizontal = 0, vertical = 1 };

// A size component with no intrinsic value (the platform's UIViewNoIntrinsicMetric).
inline constexpr CGFloat UIViewNoIntrinsicMetric = -1;

class UIView : public NSObject {
 public:
  // A view with an empty frame, or with `frame`; shown, with no subviews.
  UIView();
  explicit UIView(CGRect frame);
  ~UIView() override;

  // Geometry.
  CGRect frame() const;
  void setFrame(CGRect frame);
  CGRect bounds() const { return bounds_; }
  void setBounds(CGRect bounds);
  CGPoint center() const { return center_; }
  void setCenter(CGPoint center) { center_ = center; }

  // The tree.
  std::shared_ptr<UIView> superview() const { return superview_.lock(); }
  const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  // Adds `view` on top of the other subviews, taking it from its old superview
  // first; a subview added again moves to the top. Adding a view to itself or
  // to one of its own descendants is ignored.
  void addSubview(const std::shared_ptr<UIView>& view);
  // Inserts at `index` among the subviews (clamped to the end).
  void insertSubview(const std::shared_ptr<UIView>& view, std::size_t index);
  // Inserts right below or above `sibling`, or moves a subview to the top or
  // the bottom.
  void insertSubviewBelow(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& sibling);
  void insertSubviewAbove(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& sibling);
  void bringSubviewToFront(const std::shared_ptr<UIView>& view);
  void sendSubviewToBack(const std::shared_ptr<UIView>& view);
  // Takes this view out of its superview (which held it); nothing without one.
  void removeFromSuperview();
  // Whether this view is `ancestor` or lies below it.
  bool isDescendant(const UIView& ancestor) const;
  // The window at the root of this view's tree, if the root is a window.
  std::shared_ptr<UIWindow> window() const;
  // This view or the first descendant (depth first, back to front) with `tag`.
  std::shared_ptr<UIView> viewWithTag(int tag);

  // Appearance.
  bool isHidden() const { return hidden_; }
  virtual void setHidden(bool hidden);
  CGFloat alpha() const { return alpha_; }
  void setAlpha(CGFloat alpha) { alpha_ = alpha; }
  std::optional<UIColor> backgroundColor() const { return background_color_; }
  void setBackgroundColor(std::optional<UIColor> color) { background_color_ = color; }
  // The view's own tint, else its superview's, else the platform's blue.
  UIColor tintColor() const;
  void setTintColor(std::optional<UIColor> color) { tint_color_ = color; }
  // The view's layer: shadow and corners.
  CALayer& layer() { return layer_; }
  const CALayer& layer() const { return layer_; }
  UIViewContentMode contentMode() const { return content_mode_; }
  void setContentMode(UIViewContentMode mode) { content_mode_ = mode; }
  // Whether subviews are cut off at the bounds (the layer's masksToBounds).
  bool clipsToBounds() const { return layer_.masksToBounds(); }
  void setClipsToBounds(bool clips) { layer_.setMasksToBounds(clips); }

  // Identification, for layouts built in code and for tests.
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }
  const std::string& accessibilityIdentifier() const { return accessibility_identifier_; }
  void setAccessibilityIdentifier(std::string identifier) {
    accessibility_identifier_ = std::move(identifier);
  }

  // Autoresizing: how this view follows its superview's size changes.
  UIViewAutoresizing autoresizingMask() const { return autoresizing_mask_; }
  void setAutoresizingMask(UIViewAutoresizing mask) { autoresizing_mask_ = mask; }
  bool autoresizesSubviews() const { return autoresizes_subviews_; }
  void setAutoresizesSubviews(bool autoresizes) { autoresizes_subviews_ = autoresizes; }

  // Interaction.
  bool isUserInteractionEnabled() const { return user_interaction_enabled_; }
  void setUserInteractionEnabled(bool enabled) { user_interaction_enabled_ = enabled; }
  // The view owns its recognisers; each refers back to the view weakly.
  void addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
  void removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
  const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const {
    return gesture_recognizers_;
  }

  // --- Layout ---
  // Constraints installed in this view (active ones whose items are this
  // view or its descendants). addConstraint() installs and activates one here;
  // removeConstraint() deactivates it.
  void addConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint);
  void removeConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint);
  const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints() const { return constraints_; }

  // True (the default): the frame and autoresizing mask place the view. False:
  // constraints do, and the layout pass sets the frame.
  bool translatesAutoresizingMaskIntoConstraints() const { return translates_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates);

  // Marks this view's subviews as needing to be placed again. The
  // constraints are solved again only when something they depend on changed.
  void setNeedsLayout();
  bool needsLayout() const { return needs_layout_; }
  // Runs the pending layout of this view's whole tree now (from its root), so
  // that frames are current when it returns.
  void layoutIfNeeded();
  // Places the subviews. The default solves the constraints of the layout
  // scope this view is the root of; overrides call it first. Called by the
  // layout pass only.
  virtual void layoutSubviews();

  // The size the content wants, or UIViewNoIntrinsicMetric per component
  // (the default).
  virtual CGSize intrinsicContentSize() const;
  // The intrinsic size when the view is `width` wide: what wrapping content
  // (a multi-line label or button title) needs. The layout pass asks this
  // with the width it has given the view. The default ignores the width.
  virtual CGSize intrinsicContentSizeForWidth(CGFloat width) const;
  // Tells the layout pass that the intrinsic size has changed.
  void invalidateIntrinsicContentSize();
  // How strongly the view resists growing beyond (hugging, default 250) and
  // shrinking below (compression resistance, default 750) its intrinsic size.
  UILayoutPriority contentHuggingPriority(UILayoutConstraintAxis axis) const;
  void setContentHuggingPriority(UILayoutPriority priority, UILayoutConstraintAxis axis);
  UILayoutPriority contentCompressionResistancePriority(UILayoutConstraintAxis axis) const;
  void setContentCompressionResistancePriority(UILayoutPriority priority, UILayoutConstraintAxis axis);

  // Anchors to make constraints from (layout_constraint.h). REQUIRES: the view
  // is owned by a std::shared_ptr.
  NSLayoutAnchor leadingAnchor();
  NSLayoutAnchor trailingAnchor();
  NSLayoutAnchor leftAnchor();
  NSLayoutAnchor rightAnchor();
  NSLayoutAnchor topAnchor();
  NSLayoutAnchor bottomAnchor();
  NSLayoutAnchor widthAnchor();
  NSLayoutAnchor heightAnchor();
  NSLayoutAnchor centerXAnchor();
  NSLayoutAnchor centerYAnchor();

  // What a reader can see, for tests: this view and all its ancestors are not
  // hidden and not fully transparent...
  bool isShownInHierarchy() const;
  // ...and the tree hangs in a window.
  bool isVisibleOnScreen() const;

  // Animation: the changes apply at once; the duration is kept for tests, and
  // `completion` (if any) runs on a later turn of the main loop.
  static void animate(double duration, const std::function<void()>& animations,
                      std::function<void(bool finished)> completion = nullptr);
  static std::optional<double> lastAnimationDuration();

 protected:
  // Hooks for subclasses, called after the change.
  virtual void didMoveToSuperview() {}
  virtual void didAddSubview(const std::shared_ptr<UIView>&) {}

 private:
  friend class NSLayoutConstraint;
  friend class LayoutCycle;

  void attach(const std::shared_ptr<UIView>& view, std::size_t index);
  void resizeSubviews(CGSize old_size);
  void autoresize(CGSize old_superview_size, CGSize new_superview_size);
  // Marks the root of this view's layout scope: the constraints that place
  // this view (and its constrained descendants) must be solved again.
  void setNeedsScopeLayout();
  // One walk of the tree below (and including) this view: lays out every view
  // that needs it, parents before children.
  void layoutMarkedSubtree();
  bool anyNeedsLayoutInSubtree() const;
  std::shared_ptr<UIView> layoutRoot();

  CGRect bounds_;
  CGPoint center_;
  std::weak_ptr<UIView> superview_;
  std::vector<std::shared_ptr<UIView>> subviews_;
  bool hidden_ = false;
  CGFloat alpha_ = 1;
  std::optional<UIColor> background_color_;
  std::optional<UIColor> tint_color_;
  CALayer layer_;
  int tag_ = 0;
  std::string accessibility_identifier_;
  UIViewAutoresizing autoresizing_mask_ = UIViewAutoresizing::none;
  bool autoresizes_subviews_ = true;
  bool user_interaction_enabled_ = true;
  std::vector<std::shared_ptr<UIGestureRecognizer>> gesture_recognizers_;
  std::vector<std::shared_ptr<NSLayoutConstraint>> constraints_;
  UIViewContentMode content_mode_ = UIViewContentMode::scaleToFill;
  bool translates_ = true;
  bool needs_layout_ = true;
  // This view is a scope root whose constraints must be solved again (its
  // size, constraints, intrinsic sizes or constrained subviews changed).
  bool needs_solve_ = true;
  bool layout_scheduled_ = false;
  UILayoutPriority hugging_[2] = {UILayoutPriorityDefaultLow, UILayoutPriorityDefaultLow};
  UILayoutPriority compression_[2] = {UILayoutPriorityDefaultHigh, UILayoutPriorityDefaultHigh};
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_VIEW_H_
