#include "toolkit/layout_constraint.h"

#include <algorithm>

#include "platform/log.h"
#include "toolkit/ui_view.h"

namespace obolo {
namespace {

// The closest view that is `a` or an ancestor of it and also `b` or an
// ancestor of `b`; null when they are in different trees.
std::shared_ptr<UIView> CommonAncestor(const std::shared_ptr<UIView>& a, const std::shared_ptr<UIView>& b) {
  for (auto candidate = a; candidate; candidate = candidate->superview()) {
    if (b->isDescendant(*candidate)) return candidate;
  }
  return nullptr;
}

}  // namespace

std::shared_ptr<NSLayoutConstraint> NSLayoutConstraint::make(const std::shared_ptr<UIView>& item,
                                                             NSLayoutAttribute attribute, NSLayoutRelation relation,
                                                             const std::shared_ptr<UIView>& toItem,
                                                             NSLayoutAttribute toAttribute, CGFloat multiplier,
                                                             CGFloat constant) {
  return std::make_shared<NSLayoutConstraint>(item, attribute, relation, toItem,
                                              toItem ? toAttribute : NSLayoutAttribute::notAnAttribute, multiplier,
                                              constant);
}

void NSLayoutConstraint::activate(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
  for (const auto& constraint : constraints) {
    if (constraint) constraint->setActive(true);
  }
}

void NSLayoutConstraint::deactivate(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
  for (const auto& constraint : constraints) {
    if (constraint) constraint->setActive(false);
  }
}

void NSLayoutConstraint::changed() {
  if (!active_) return;
  if (auto owner = owner_.lock()) owner->setNeedsScopeLayout();
}

void NSLayoutConstraint::setConstant(CGFloat constant) {
  if (constant == constant_) return;
  constant_ = constant;
  changed();
}

void NSLayoutConstraint::setPriority(UILayoutPriority priority) {
  priority = std::clamp<UILayoutPriority>(priority, 1, UILayoutPriorityRequired);
  if (priority == priority_) return;
  priority_ = priority;
  changed();
}

void NSLayoutConstraint::setActive(bool active) {
  if (active == active_) return;
  if (!active) {
    if (auto owner = owner_.lock()) owner->removeConstraint(selfAs(this));
    active_ = false;
    owner_.reset();
    return;
  }
  auto first = first_item_.lock();
  auto second = second_item_.lock();
  std::shared_ptr<UIView> owner;
  if (first) owner = second ? CommonAncestor(first, second) : first;
  if (!owner || (!second && second_attribute_ != NSLayoutAttribute::notAnAttribute)) {
    LogLine("Unable to activate constraint " + identifier_ +
            ": its items are gone or have no common ancestor");
    return;
  }
  owner->addConstraint(selfAs(this));
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::to(const NSLayoutAnchor* other, NSLayoutRelation relation,
                                                       CGFloat multiplier, CGFloat constant) const {
  return NSLayoutConstraint::make(item_, attribute_, relation, other ? other->item_ : nullptr,
                                  other ? other->attribute_ : NSLayoutAttribute::notAnAttribute, multiplier,
                                  constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::equalTo(const NSLayoutAnchor& other, CGFloat constant) const {
  return to(&other, NSLayoutRelation::equal, 1, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::greaterThanOrEqualTo(const NSLayoutAnchor& other,
                                                                         CGFloat constant) const {
  return to(&other, NSLayoutRelation::greaterThanOrEqual, 1, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::lessThanOrEqualTo(const NSLayoutAnchor& other,
                                                                      CGFloat constant) const {
  return to(&other, NSLayoutRelation::lessThanOrEqual, 1, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::equalTo(const NSLayoutAnchor& other, CGFloat multiplier,
                                                            CGFloat constant) const {
  return to(&other, NSLayoutRelation::equal, multiplier, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::equalToConstant(CGFloat constant) const {
  return to(nullptr, NSLayoutRelation::equal, 1, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::lessThanOrEqualToConstant(CGFloat constant) const {
  return to(nullptr, NSLayoutRelation::lessThanOrEqual, 1, constant);
}

std::shared_ptr<NSLayoutConstraint> NSLayoutAnchor::greaterThanOrEqualToConstant(CGFloat constant) const {
  return to(nullptr, NSLayoutRelation::greaterThanOrEqual, 1, constant);
}

}  // namespace obolo
