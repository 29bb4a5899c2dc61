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
#include "toolkit/ns_object.h"
#include "toolkit/ui_color.h"

namespace obolo {

class NSLayoutConstraint;
class UIGestureRecognizer;
class UIWindow;

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
  virtual void setHidden(bool hidden) { hidden_ = hidden; }
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

  // Constraints the view owns (its layout's). The toolkit has no solver; see
  // NSLayoutConstraint.
  void addConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint);
  const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints() const { return constraints_; }

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
  void attach(const std::shared_ptr<UIView>& view, std::size_t index);
  void resizeSubviews(CGSize old_size);
  void autoresize(CGSize old_superview_size, CGSize new_superview_size);

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
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_VIEW_H_
