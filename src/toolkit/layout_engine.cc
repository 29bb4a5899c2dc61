#include "toolkit/layout_engine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/log.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/priority_solver.h"
#include "toolkit/ui_view.h"

namespace obolo {
namespace {

enum class Axis { horizontal, vertical };

// An attribute as a combination of a view's two edges on one axis:
// value = low × (left or top) + high × (right or bottom).
struct EdgeForm {
  bool valid = false;
  Axis axis = Axis::horizontal;
  double low = 0;
  double high = 0;
};

EdgeForm FormOf(NSLayoutAttribute attribute) {
  using enum NSLayoutAttribute;
  switch (attribute) {
    case left:
    case leading:
      return {true, Axis::horizontal, 1, 0};
    case right:
    case trailing:
      return {true, Axis::horizontal, 0, 1};
    case centerX:
      return {true, Axis::horizontal, 0.5, 0.5};
    case width:
      return {true, Axis::horizontal, -1, 1};
    case top:
      return {true, Axis::vertical, 1, 0};
    case bottom:
      return {true, Axis::vertical, 0, 1};
    case centerY:
      return {true, Axis::vertical, 0.5, 0.5};
    case height:
      return {true, Axis::vertical, -1, 1};
    case notAnAttribute:
      break;
  }
  return {};
}

const char* AttributeName(NSLayoutAttribute attribute) {
  using enum NSLayoutAttribute;
  switch (attribute) {
    case left:
      return "left";
    case right:
      return "right";
    case top:
      return "top";
    case bottom:
      return "bottom";
    case leading:
      return "leading";
    case trailing:
      return "trailing";
    case width:
      return "width";
    case height:
      return "height";
    case centerX:
      return "centerX";
    case centerY:
      return "centerY";
    case notAnAttribute:
      break;
  }
  return "-";
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string Describe(const NSLayoutConstraint& constraint) {
  if (!constraint.identifier().empty()) return constraint.identifier();
  const char* relation = constraint.relation() == NSLayoutRelation::equal              ? "=="
                         : constraint.relation() == NSLayoutRelation::lessThanOrEqual ? "<="
                                                                                       : ">=";
  std::string text = std::string("view.") + AttributeName(constraint.firstAttribute()) + " " + relation + " ";
  if (constraint.secondItem()) {
    text += Number(constraint.multiplier()) + " * view." + AttributeName(constraint.secondAttribute()) + " + ";
  }
  return text + Number(constraint.constant());
}

struct Rect {
  double minX, minY, maxX, maxY;
};

Rect FromCGRect(CGRect r) { return {r.minX(), r.minY(), r.maxX(), r.maxY()}; }

}  // namespace

// The views and constraints of one scope.
class LayoutScope {
 public:
  explicit LayoutScope(UIView& root) : root_(root) {
    take(root);
    gather(root);
    std::sort(constraints_.begin(), constraints_.end(), [](const NSLayoutConstraint* a, const NSLayoutConstraint* b) {
      return a->installed_sequence_ < b->installed_sequence_;
    });
  }

  bool empty() const { return views_.empty() && constraints_.empty(); }

  void solve() {
    std::vector<double> minX(views_.size()), maxX(views_.size()), minY(views_.size()), maxY(views_.size());
    solveAxis(Axis::horizontal, minX, maxX);
    solveAxis(Axis::vertical, minY, maxY);
    apply(minX, maxX, minY, maxY);
  }

 private:
  void take(const UIView& view) {
    for (const auto& constraint : view.constraints()) {
      if (constraint && constraint->isActive()) constraints_.push_back(constraint.get());
    }
  }

  void gather(const UIView& view) {
    for (const auto& child : view.subviews()) {
      if (child->translatesAutoresizingMaskIntoConstraints()) continue;
      index_[child.get()] = views_.size();
      views_.push_back(child.get());
      current_.push_back(rectInRoot(*child).value_or(Rect{0, 0, 0, 0}));
      take(*child);
      gather(*child);
    }
  }

  // The view's rectangle in the root's bounds coordinates, from the frames as
  // they are; none when the view is not in the root's tree.
  std::optional<Rect> rectInRoot(const UIView& view) const {
    if (&view == &root_) return FromCGRect(root_.bounds());
    CGRect rect = view.frame();
    auto parent = view.superview();
    while (parent && parent.get() != &root_) {
      const CGRect frame = parent->frame();
      const CGRect bounds = parent->bounds();
      rect.origin.x += frame.minX() - bounds.minX();
      rect.origin.y += frame.minY() - bounds.minY();
      parent = parent->superview();
    }
    if (!parent) return std::nullopt;
    return FromCGRect(rect);
  }

  // Adds `scale` × the item's attribute to the terms (a solved view) or to
  // `fixed` (any other view of the tree). False when the item is unusable.
  bool side(const std::shared_ptr<UIView>& item, const EdgeForm& form, Axis axis, double scale,
            std::vector<PrioritySolver::Term>& terms, double& fixed) const {
    if (!item) return false;
    if (auto found = index_.find(item.get()); found != index_.end()) {
      const std::size_t base = 2 * found->second;
      if (form.low != 0) terms.push_back({base, scale * form.low});
      if (form.high != 0) terms.push_back({base + 1, scale * form.high});
      return true;
    }
    auto rect = rectInRoot(*item);
    if (!rect) return false;
    const double low = axis == Axis::horizontal ? rect->minX : rect->minY;
    const double high = axis == Axis::horizontal ? rect->maxX : rect->maxY;
    fixed += scale * (form.low * low + form.high * high);
    return true;
  }

  void solveAxis(Axis axis, std::vector<double>& low, std::vector<double>& high) {
    PrioritySolver solver(2 * views_.size());
    std::vector<NSLayoutConstraint*> rules;  // by rule index; null for intrinsic sizes

    for (NSLayoutConstraint* constraint : constraints_) {
      const EdgeForm first = FormOf(constraint->firstAttribute());
      if (!first.valid || first.axis != axis) continue;
      std::vector<PrioritySolver::Term> terms;
      double fixed = 0;
      if (!side(constraint->firstItem(), first, axis, 1, terms, fixed)) continue;
      const EdgeForm second = FormOf(constraint->secondAttribute());
      if (second.valid) {
        if (second.axis != axis) continue;
        if (!side(constraint->secondItem(), second, axis, -constraint->multiplier(), terms, fixed)) continue;
      }
      const auto relation = constraint->relation() == NSLayoutRelation::equal ? PrioritySolver::Relation::equal
                            : constraint->relation() == NSLayoutRelation::lessThanOrEqual
                                ? PrioritySolver::Relation::lessThanOrEqual
                                : PrioritySolver::Relation::greaterThanOrEqual;
      solver.add(std::move(terms), relation, constraint->constant() - fixed, constraint->priority());
      rules.push_back(constraint);
    }

    const auto axisKey = axis == Axis::horizontal ? UILayoutConstraintAxis::horizontal
                                                  : UILayoutConstraintAxis::vertical;
    for (std::size_t i = 0; i < views_.size(); ++i) {
      const UIView& view = *views_[i];
      const CGSize size = axis == Axis::horizontal ? view.intrinsicContentSize()
                                                   : view.intrinsicContentSizeForWidth(widths_[i]);
      const double length = axis == Axis::horizontal ? size.width : size.height;
      if (length < 0) continue;
      const std::vector<PrioritySolver::Term> extent{{2 * i, -1}, {2 * i + 1, 1}};
      solver.add(extent, PrioritySolver::Relation::greaterThanOrEqual, length,
                 view.contentCompressionResistancePriority(axisKey));
      // Hugging as an equality: the content size is what the view takes when
      // nothing more important stretches or squeezes it.
      solver.add(extent, PrioritySolver::Relation::equal, length, view.contentHuggingPriority(axisKey));
      rules.push_back(nullptr);
      rules.push_back(nullptr);
    }

    std::vector<double> fallback(2 * views_.size());
    for (std::size_t i = 0; i < views_.size(); ++i) {
      fallback[2 * i] = axis == Axis::horizontal ? current_[i].minX : current_[i].minY;
      fallback[2 * i + 1] = axis == Axis::horizontal ? current_[i].maxX : current_[i].maxY;
    }
    const std::vector<double> values = solver.solve(fallback);
    for (std::size_t i = 0; i < views_.size(); ++i) {
      low[i] = std::round(values[2 * i]);
      high[i] = std::max(low[i], std::round(values[2 * i + 1]));
    }
    if (axis == Axis::horizontal) {
      widths_.resize(views_.size());
      for (std::size_t i = 0; i < views_.size(); ++i) widths_[i] = high[i] - low[i];
    }

    for (std::size_t index : solver.dropped()) {
      NSLayoutConstraint* constraint = rules[index];
      if (constraint == nullptr || constraint->priority() < UILayoutPriorityRequired) continue;
      if (constraint->reported_unsatisfiable_) continue;
      constraint->reported_unsatisfiable_ = true;
      LogLine("Unable to simultaneously satisfy constraints; breaking " + Describe(*constraint));
    }
  }

  void apply(const std::vector<double>& minX, const std::vector<double>& maxX, const std::vector<double>& minY,
             const std::vector<double>& maxY) {
    // Parents come before their children in views_, so a child is placed in
    // its parent's new frame.
    for (std::size_t i = 0; i < views_.size(); ++i) {
      UIView& view = *views_[i];
      double x = minX[i];
      double y = minY[i];
      auto parent = view.superview();
      if (parent && parent.get() != &root_) {
        const std::size_t p = index_.at(parent.get());
        x -= minX[p] - parent->bounds().minX();
        y -= minY[p] - parent->bounds().minY();
      }
      view.setFrame(CGRect(x, y, maxX[i] - minX[i], maxY[i] - minY[i]));
    }
  }

  UIView& root_;
  std::vector<UIView*> views_;  // the constrained views, parents first
  std::unordered_map<const UIView*, std::size_t> index_;
  std::vector<Rect> current_;
  std::vector<NSLayoutConstraint*> constraints_;
  std::vector<double> widths_;
};

void LayoutEngine::solveScope(UIView& root) {
  LayoutScope scope(root);
  if (scope.empty()) return;
  scope.solve();
}

}  // namespace obolo
