// A layout constraint: one linear relation between two views' edges, centres
// or sizes, as the platform has them:
//
//   first.firstAttribute  {≤, =, ≥}  multiplier × second.secondAttribute + constant
//
// or, without a second item, first.firstAttribute {≤, =, ≥} constant (fixed
// widths and heights). A constraint with a priority below required (1000) may
// be broken when it cannot hold with the more important ones.
//
// Activating a constraint installs it in the closest common ancestor of its
// items (the item itself when there is one), which then owns it; it holds its
// items weakly. Deactivating removes it. Items without a common ancestor
// cannot be related: activation logs one line and leaves the constraint
// inactive. Of two constraints of the same priority that contradict, the one
// activated later is broken. A constraint that relates a horizontal attribute to a vertical
// one is ignored by the layout pass.
//
// Changing an active constraint (its constant, priority or activation) marks
// the layout of its views as needed; the layout pass runs once at the end of
// the main loop's turn, or at layoutIfNeeded() (see UIView). Nothing moves at
// the moment of the change.
//
// Main thread only.

#ifndef OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_
#define OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/geometry.h"
#include "toolkit/ns_object.h"

namespace obolo {

class UIView;

// The platform's raw values.
enum class NSLayoutAttribute {
  notAnAttribute = 0,
  left = 1,
  right = 2,
  top = 3,
  bottom = 4,
  leading = 5,
  trailing = 6,
  width = 7,
  height = 8,
  centerX = 9,
  centerY = 10,
};

// How the two sides of a constraint compare.
enum class NSLayoutRelation { lessThanOrEqual = -1, equal = 0, greaterThanOrEqual = 1 };

// 1 to 1000; 1000 is required.
using UILayoutPriority = float;
inline constexpr UILayoutPriority UILayoutPriorityRequired = 1000;
inline constexpr UILayoutPriority UILayoutPriorityDefaultHigh = 750;
inline constexpr UILayoutPriority UILayoutPriorityDefaultLow = 250;

class NSLayoutConstraint : public NSObject {
 public:
  // The priority a constraint has unless lowered: it must hold.
  static constexpr UILayoutPriority kPriorityRequired = UILayoutPriorityRequired;

  // The platform's constraintWithItem:attribute:relatedBy:toItem:attribute:
  // multiplier:constant:. The constraint starts inactive.
  static std::shared_ptr<NSLayoutConstraint> make(const std::shared_ptr<UIView>& item, NSLayoutAttribute attribute,
                                                  NSLayoutRelation relation, const std::shared_ptr<UIView>& toItem,
                                                  NSLayoutAttribute toAttribute, CGFloat multiplier = 1,
                                                  CGFloat constant = 0);

  // Activates or deactivates each of the constraints.
  static void activate(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);
  static void deactivate(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);

  // What the constraint relates: first item's attribute, the relation, the
  // second item's attribute (no item for a fixed size) times the multiplier.
  // The items are not kept alive by the constraint.
  std::shared_ptr<UIView> firstItem() const { return first_item_.lock(); }
  NSLayoutAttribute firstAttribute() const { return first_attribute_; }
  NSLayoutRelation relation() const { return relation_; }
  std::shared_ptr<UIView> secondItem() const { return second_item_.lock(); }
  NSLayoutAttribute secondAttribute() const { return second_attribute_; }
  CGFloat multiplier() const { return multiplier_; }

  // The name the layout gives it; the distance or size it holds; whether it takes
  // part in layout; and its priority, kPriorityRequired unless lowered.
  const std::string& identifier() const { return identifier_; }
  void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }
  CGFloat constant() const { return constant_; }
  void setConstant(CGFloat constant);
  bool isActive() const { return active_; }
  void setActive(bool active);
  UILayoutPriority priority() const { return priority_; }
  void setPriority(UILayoutPriority priority);

  // The view the constraint is installed in while active.
  std::shared_ptr<UIView> owner() const { return owner_.lock(); }

  // Made through make() (or UIView's anchors); public for std::make_shared.
  NSLayoutConstraint(std::weak_ptr<UIView> item, NSLayoutAttribute attribute, NSLayoutRelation relation,
                     std::weak_ptr<UIView> toItem, NSLayoutAttribute toAttribute, CGFloat multiplier,
                     CGFloat constant)
      : first_item_(std::move(item)),
        first_attribute_(attribute),
        relation_(relation),
        second_item_(std::move(toItem)),
        second_attribute_(toAttribute),
        multiplier_(multiplier),
        constant_(constant) {}

 private:
  friend class UIView;
  friend class LayoutScope;

  void changed();

  std::weak_ptr<UIView> first_item_;
  NSLayoutAttribute first_attribute_;
  NSLayoutRelation relation_;
  std::weak_ptr<UIView> second_item_;
  NSLayoutAttribute second_attribute_;
  CGFloat multiplier_;
  CGFloat constant_;
  std::string identifier_;
  bool active_ = false;
  UILayoutPriority priority_ = UILayoutPriorityRequired;
  std::weak_ptr<UIView> owner_;
  // When the constraint was last installed: among equally important
  // constraints that contradict, the one installed later breaks.
  std::uint64_t installed_sequence_ = 0;
  // Set once the layout pass has reported that a required constraint cannot
  // hold, so the report is made once.
  bool reported_unsatisfiable_ = false;
};

// One attribute of one view, to make constraints from, like the platform's
// layout anchors: view->topAnchor().equalTo(other->bottomAnchor(), 8).
// The returned constraints are inactive; activate them together.
class NSLayoutAnchor {
 public:
  // The anchor of `item`'s `attribute`; views hand these out (topAnchor() ...).
  NSLayoutAnchor(std::shared_ptr<UIView> item, NSLayoutAttribute attribute)
      : item_(std::move(item)), attribute_(attribute) {}

  // This anchor at, at least, or at most `other` plus `constant` points.
  std::shared_ptr<NSLayoutConstraint> equalTo(const NSLayoutAnchor& other, CGFloat constant = 0) const;
  std::shared_ptr<NSLayoutConstraint> greaterThanOrEqualTo(const NSLayoutAnchor& other, CGFloat constant = 0) const;
  std::shared_ptr<NSLayoutConstraint> lessThanOrEqualTo(const NSLayoutAnchor& other, CGFloat constant = 0) const;
  // Dimensions: a multiple of another dimension, or a fixed size.
  std::shared_ptr<NSLayoutConstraint> equalTo(const NSLayoutAnchor& other, CGFloat multiplier, CGFloat constant) const;
  std::shared_ptr<NSLayoutConstraint> equalToConstant(CGFloat constant) const;
  std::shared_ptr<NSLayoutConstraint> lessThanOrEqualToConstant(CGFloat constant) const;
  std::shared_ptr<NSLayoutConstraint> greaterThanOrEqualToConstant(CGFloat constant) const;

 private:
  std::shared_ptr<NSLayoutConstraint> to(const NSLayoutAnchor* other, NSLayoutRelation relation, CGFloat multiplier,
                                         CGFloat constant) const;

  std::shared_ptr<UIView> item_;
  NSLayoutAttribute attribute_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_
