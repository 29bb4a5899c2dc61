#include "toolkit/ui_view.h"

#include <algorithm>

#include "platform/main_loop.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/layout_cycle.h"
#include "toolkit/layout_engine.h"
#include "toolkit/ui_gesture_recognizer.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

std::optional<double>& LastAnimationDuration() {
  static std::optional<double> duration;
  return duration;
}

// One axis of autoresizing: the child's leading margin, length and trailing
// margin in its superview, and which of them may change. The change of the
// superview's length is shared among the flexible parts in proportion to their
// current lengths (equally when they are all zero), as the platform does.
void ResizeAxis(CGFloat& origin, CGFloat& length, CGFloat old_container, CGFloat new_container,
                bool flexible_leading, bool flexible_length, bool flexible_trailing) {
  const CGFloat delta = new_container - old_container;
  if (delta == 0) return;
  CGFloat leading = origin;
  CGFloat trailing = old_container - origin - length;
  const bool flexible[3] = {flexible_leading, flexible_length, flexible_trailing};
  CGFloat* parts[3] = {&leading, &length, &trailing};
  int count = 0;
  CGFloat total = 0;
  for (int i = 0; i < 3; ++i) {
    if (!flexible[i]) continue;
    ++count;
    total += std::max<CGFloat>(*parts[i], 0);
  }
  if (count == 0) return;  // fixed margins and length: the view keeps its place
  for (int i = 0; i < 3; ++i) {
    if (!flexible[i]) continue;
    const CGFloat share = total > 0 ? std::max<CGFloat>(*parts[i], 0) / total : 1.0 / count;
    *parts[i] += delta * share;
  }
  origin = leading;
}

}  // namespace

UIView::UIView() = default;

// Passes over a tree before the layout pass gives up on views that keep asking
// for layout from inside their own layoutSubviews().
constexpr int kMaxLayoutPasses = 8;

UIView::UIView(CGRect frame) { setFrame(frame); }

UIView::~UIView() = default;

CGRect UIView::frame() const {
  return CGRect(center_.x - bounds_.size.width / 2, center_.y - bounds_.size.height / 2, bounds_.size.width,
                bounds_.size.height);
}

void UIView::setFrame(CGRect frame) {
  const CGSize old_size = bounds_.size;
  bounds_.size = frame.size;
  center_ = CGPoint{frame.midX(), frame.midY()};
  if (old_size != frame.size) resizeSubviews(old_size);
}

void UIView::setBounds(CGRect bounds) {
  const CGSize old_size = bounds_.size;
  bounds_ = bounds;
  if (old_size != bounds.size) resizeSubviews(old_size);
}

void UIView::resizeSubviews(CGSize old_size) {
  needs_solve_ = true;
  setNeedsLayout();
  if (!autoresizes_subviews_) return;
  const auto children = subviews_;  // a subview's resize cannot change this list, but be safe
  for (const auto& child : children) {
    if (child->translates_) child->autoresize(old_size, bounds_.size);
  }
}

void UIView::autoresize(CGSize old_superview_size, CGSize new_superview_size) {
  using enum UIViewAutoresizing;
  const UIViewAutoresizing mask = autoresizing_mask_;
  if (mask == none) return;
  const auto parent = superview();
  const CGPoint parent_origin = parent ? parent->bounds().origin : CGPoint{};
  CGRect f = frame();
  f.origin.x -= parent_origin.x;
  f.origin.y -= parent_origin.y;
  ResizeAxis(f.origin.x, f.size.width, old_superview_size.width, new_superview_size.width,
             Contains(mask, flexibleLeftMargin), Contains(mask, flexibleWidth),
             Contains(mask, flexibleRightMargin));
  ResizeAxis(f.origin.y, f.size.height, old_superview_size.height, new_superview_size.height,
             Contains(mask, flexibleTopMargin), Contains(mask, flexibleHeight),
             Contains(mask, flexibleBottomMargin));
  f.origin.x += parent_origin.x;
  f.origin.y += parent_origin.y;
  setFrame(f);
}

bool UIView::isDescendant(const UIView& ancestor) const {
  for (const UIView* view = this; view != nullptr;) {
    if (view == &ancestor) return true;
    auto parent = view->superview_.lock();
    view = parent.get();
  }
  return false;
}

void UIView::attach(const std::shared_ptr<UIView>& view, std::size_t index) {
  if (!view || view.get() == this || isDescendant(*view)) return;
  auto self = selfAs(this);
  if (view->superview().get() == this) {
    auto it = std::find(subviews_.begin(), subviews_.end(), view);
    const auto old_index = static_cast<std::size_t>(it - subviews_.begin());
    subviews_.erase(it);
    if (index > old_index) --index;
    subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(std::min(index, subviews_.size())),
                     view);
    return;
  }
  view->removeFromSuperview();
  subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(std::min(index, subviews_.size())), view);
  view->superview_ = self;
  // Its own constraints are solved again in the tree it joins.
  view->needs_solve_ = true;
  view->needs_layout_ = true;
  setNeedsScopeLayout();
  view->didMoveToSuperview();
  didAddSubview(view);
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  // A subview added again goes to the top: its index after removal is the end.
  attach(view, subviews_.size() + 1);
}

void UIView::insertSubview(const std::shared_ptr<UIView>& view, std::size_t index) { attach(view, index); }

void UIView::insertSubviewBelow(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& sibling) {
  auto it = std::find(subviews_.begin(), subviews_.end(), sibling);
  if (it == subviews_.end()) return addSubview(view);
  attach(view, static_cast<std::size_t>(it - subviews_.begin()));
}

void UIView::insertSubviewAbove(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& sibling) {
  auto it = std::find(subviews_.begin(), subviews_.end(), sibling);
  if (it == subviews_.end()) return addSubview(view);
  attach(view, static_cast<std::size_t>(it - subviews_.begin()) + 1);
}

void UIView::bringSubviewToFront(const std::shared_ptr<UIView>& view) {
  if (view && view->superview().get() == this) addSubview(view);
}

void UIView::sendSubviewToBack(const std::shared_ptr<UIView>& view) {
  if (view && view->superview().get() == this) attach(view, 0);
}

void UIView::removeFromSuperview() {
  auto parent = superview_.lock();
  superview_.reset();
  if (!parent) return;
  // Keeps this view alive until it has been told, even if the superview held
  // the last reference.
  auto self = selfAs(this);
  auto& siblings = parent->subviews_;
  siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                                [this](const std::shared_ptr<UIView>& v) { return v.get() == this; }),
                 siblings.end());
  parent->setNeedsScopeLayout();
  didMoveToSuperview();
}

std::shared_ptr<UIWindow> UIView::window() const {
  std::shared_ptr<const UIView> root = selfAs(this);
  if (!root) return nullptr;
  while (auto parent = root->superview()) root = parent;
  return std::dynamic_pointer_cast<UIWindow>(std::const_pointer_cast<UIView>(root));
}

std::shared_ptr<UIView> UIView::viewWithTag(int tag) {
  if (tag_ == tag) return selfAs(this);
  for (const auto& child : subviews_) {
    if (auto found = child->viewWithTag(tag)) return found;
  }
  return nullptr;
}

UIColor UIView::tintColor() const {
  if (tint_color_) return *tint_color_;
  if (auto parent = superview()) return parent->tintColor();
  return UIColor::systemBlue();
}

void UIView::addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  if (!recognizer) return;
  if (auto previous = recognizer->view()) {
    if (previous.get() != this) previous->removeGestureRecognizer(recognizer);
  }
  if (std::find(gesture_recognizers_.begin(), gesture_recognizers_.end(), recognizer) ==
      gesture_recognizers_.end()) {
    gesture_recognizers_.push_back(recognizer);
  }
  recognizer->view_ = selfAs(this);
}

void UIView::removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  auto it = std::find(gesture_recognizers_.begin(), gesture_recognizers_.end(), recognizer);
  if (it == gesture_recognizers_.end()) return;
  gesture_recognizers_.erase(it);
  recognizer->view_.reset();
}

void UIView::setHidden(bool hidden) {
  if (hidden == hidden_) return;
  hidden_ = hidden;
  if (auto parent = superview()) parent->setNeedsLayout();
}

void UIView::addConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint) {
  if (!constraint) return;
  if (constraint->owner().get() == this) return;
  if (constraint->isActive()) constraint->setActive(false);
  static std::uint64_t installed = 0;  // main thread only
  constraint->installed_sequence_ = ++installed;
  constraints_.push_back(constraint);
  constraint->active_ = true;
  constraint->owner_ = selfAs(this);
  setNeedsScopeLayout();
}

void UIView::removeConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint) {
  auto it = std::find(constraints_.begin(), constraints_.end(), constraint);
  if (it == constraints_.end()) return;
  const auto keep = *it;  // the list may hold the last reference
  constraints_.erase(it);
  keep->active_ = false;
  keep->owner_.reset();
  setNeedsScopeLayout();
}

void UIView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
  if (translates == translates_) return;
  translates_ = translates;
  setNeedsScopeLayout();
  if (auto parent = superview()) parent->setNeedsScopeLayout();
}

void UIView::setNeedsLayout() {
  needs_layout_ = true;
  LayoutCycle::schedule(*this);
}

void UIView::setNeedsScopeLayout() {
  UIView* view = this;
  while (!view->translates_) {
    auto parent = view->superview_.lock();
    if (!parent) break;
    view = parent.get();
  }
  view->needs_solve_ = true;
  view->setNeedsLayout();
}

std::shared_ptr<UIView> UIView::layoutRoot() {
  auto root = selfAs(this);
  if (!root) root = superview();  // a view no shared_ptr owns: its tree above it
  if (!root) return nullptr;
  while (auto parent = root->superview()) root = parent;
  return root;
}

void UIView::layoutIfNeeded() {
  // Keeps the tree alive while its views run their layout code.
  auto root = layoutRoot();
  UIView& top = root ? *root : *this;
  for (int pass = 0; pass < kMaxLayoutPasses && top.anyNeedsLayoutInSubtree(); ++pass) {
    top.layoutMarkedSubtree();
  }
}

bool UIView::anyNeedsLayoutInSubtree() const {
  if (needs_layout_) return true;
  return std::any_of(subviews_.begin(), subviews_.end(),
                     [](const std::shared_ptr<UIView>& child) { return child->anyNeedsLayoutInSubtree(); });
}

void UIView::layoutMarkedSubtree() {
  if (needs_layout_) {
    needs_layout_ = false;
    layoutSubviews();
  }
  const auto children = subviews_;  // layoutSubviews() may add or remove subviews
  for (const auto& child : children) child->layoutMarkedSubtree();
}

void UIView::layoutSubviews() {
  if (!needs_solve_) return;
  needs_solve_ = false;
  if (translates_ || superview_.expired()) LayoutEngine::solveScope(*this);
}

CGSize UIView::intrinsicContentSize() const { return CGSize{UIViewNoIntrinsicMetric, UIViewNoIntrinsicMetric}; }

CGSize UIView::intrinsicContentSizeForWidth(CGFloat /*width*/) const { return intrinsicContentSize(); }

void UIView::invalidateIntrinsicContentSize() {
  if (!translates_) setNeedsScopeLayout();
}

UILayoutPriority UIView::contentHuggingPriority(UILayoutConstraintAxis axis) const {
  return hugging_[static_cast<int>(axis)];
}

void UIView::setContentHuggingPriority(UILayoutPriority priority, UILayoutConstraintAxis axis) {
  hugging_[static_cast<int>(axis)] = priority;
  invalidateIntrinsicContentSize();
}

UILayoutPriority UIView::contentCompressionResistancePriority(UILayoutConstraintAxis axis) const {
  return compression_[static_cast<int>(axis)];
}

void UIView::setContentCompressionResistancePriority(UILayoutPriority priority, UILayoutConstraintAxis axis) {
  compression_[static_cast<int>(axis)] = priority;
  invalidateIntrinsicContentSize();
}

NSLayoutAnchor UIView::leadingAnchor() { return {selfAs(this), NSLayoutAttribute::leading}; }
NSLayoutAnchor UIView::trailingAnchor() { return {selfAs(this), NSLayoutAttribute::trailing}; }
NSLayoutAnchor UIView::leftAnchor() { return {selfAs(this), NSLayoutAttribute::left}; }
NSLayoutAnchor UIView::rightAnchor() { return {selfAs(this), NSLayoutAttribute::right}; }
NSLayoutAnchor UIView::topAnchor() { return {selfAs(this), NSLayoutAttribute::top}; }
NSLayoutAnchor UIView::bottomAnchor() { return {selfAs(this), NSLayoutAttribute::bottom}; }
NSLayoutAnchor UIView::widthAnchor() { return {selfAs(this), NSLayoutAttribute::width}; }
NSLayoutAnchor UIView::heightAnchor() { return {selfAs(this), NSLayoutAttribute::height}; }
NSLayoutAnchor UIView::centerXAnchor() { return {selfAs(this), NSLayoutAttribute::centerX}; }
NSLayoutAnchor UIView::centerYAnchor() { return {selfAs(this), NSLayoutAttribute::centerY}; }

bool UIView::isShownInHierarchy() const {
  for (const UIView* view = this; view != nullptr;) {
    if (view->hidden_ || view->alpha_ <= 0) return false;
    auto parent = view->superview_.lock();
    view = parent.get();
  }
  return true;
}

bool UIView::isVisibleOnScreen() const { return isShownInHierarchy() && window() != nullptr; }

void UIView::animate(double duration, const std::function<void()>& animations,
                     std::function<void(bool)> completion) {
  LastAnimationDuration() = duration;
  if (animations) animations();
  if (completion) MainLoop::main().post([completion = std::move(completion)] { completion(true); });
}

std::optional<double> UIView::lastAnimationDuration() { return LastAnimationDuration(); }

}  // namespace obolo
